#include "tests/system/daemon.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <iterator>
#include <sstream>
#include <stdexcept>
#include <utility>

#include "tests/support/sanitizers.h"

namespace tevra::test {
namespace {

Lines splitLines(const std::string& text) {
  std::istringstream stream(text);
  Lines lines;
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

std::unique_ptr<ChildProcess> startIn(const std::string& root, std::vector<std::string> command,
                                      Environment environment, const DaemonSetup& setup) {
  command.insert(command.begin(), daemonPath());
  environment.emplace("TEVRA_CONF_ROOT", root);
  return std::make_unique<ChildProcess>(ChildProcess::Setup{
      std::move(command), std::move(environment), setup.addressSpace, setup.user});
}

}  // namespace

std::string daemonPath() {
  return TORNEL_DAEMON;
}

std::unique_ptr<ChildProcess> runDaemon(const std::string& root,
                                        const std::vector<std::string>& arguments,
                                        Environment environment) {
  return startIn(root, arguments, std::move(environment), {});
}

Daemon::Daemon(std::string root, DaemonSetup setup)
    : root_(std::move(root)), setup_(std::move(setup)) {
  start();
}

Daemon::~Daemon() {
  expectNoRace();
  if (!kAddressSanitized || !running()) {
    return;
  }
  ::kill(pid(), SIGTERM);
  const std::optional<ProcessEnd> end = waitForEnd();
  EXPECT_TRUE(end && end->exitStatus == 0) << "the daemon leaked or did not end:\n"
                                           << process_->standardError();
}

void Daemon::expectNoRace() const {
  if (kThreadSanitized) {
    const std::string said = process_->standardError();
    EXPECT_EQ(said.find(kRaceReport), std::string::npos) << said;
  }
}

void Daemon::restart() {
  process_->kill();
  expectNoRace();
  start();
}

void Daemon::restart(DaemonSetup setup) {
  setup_ = std::move(setup);
  restart();
}

void Daemon::start() {
  std::vector<std::string> command = {"--set", std::to_string(setup_.set), "--console", "--level",
                                      std::to_string(setup_.level)};
  command.insert(command.end(), setup_.arguments.begin(), setup_.arguments.end());
  process_ = startIn(root_, std::move(command), setup_.environment, setup_);
  if (!waitForLine("4 Tornel " + std::to_string(setup_.set) + " started ...")) {
    throw std::runtime_error("the daemon does not start:\n" + process_->standardError());
  }
}

Lines Daemon::logLines() const {
  const std::string text = process_->standardError();
  return splitLines(text.substr(0, text.rfind('\n') + 1));
}

Lines Daemon::linesOf(const std::function<void()>& call) const {
  const auto before = static_cast<Lines::difference_type>(logLines().size());
  call();
  const Lines lines = logLines();
  return {lines.begin() + before, lines.end()};
}

bool Daemon::waitForLine(const std::string& line) const {
  bool found = false;
  (void)eventually([&] {
    const bool ended = !process_->running();  // asked first, so that no last line is missed
    found = timesIn(logLines(), line) > 0;
    return found || ended;
  });
  return found;
}

Lines upToLevel(const Lines& lines, char digit) {
  Lines severe;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(severe),
               [digit](const std::string& line) { return !line.empty() && line[0] <= digit; });
  return severe;
}

int64_t timesIn(const Lines& lines, const std::string& line) {
  return std::count(lines.begin(), lines.end(), line);
}

}  // namespace tevra::test
