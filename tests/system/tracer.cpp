#include "tests/system/tracer.h"

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <sstream>
#include <utility>

#include "tests/support/files.h"

namespace tevra::test {
namespace {

std::string serverThread(pid_t daemon) {
  const std::string main = std::to_string(daemon);
  for (const auto& task : std::filesystem::directory_iterator("/proc/" + main + "/task")) {
    if (task.path().filename() != main) {
      return task.path().filename();
    }
  }
  return main;
}

ChildProcess::Setup setupOf(pid_t daemon, std::vector<std::string> options,
                            const std::string& output) {
  // Texts whole and every byte of them as \xHH, so that nothing in them looks like anything else.
  std::vector<std::string> command = {
      TORNEL_STRACE, "-xx", "-s",   "1000000", "-e",
      "signal=none", "-o",  output, "-p",      serverThread(daemon)};
  command.insert(command.end(), options.begin(), options.end());
  return {std::move(command)};
}

std::string withoutHex(const std::string& argument) {
  std::string text;
  for (size_t at = argument.find('\\'); at != std::string::npos; at = argument.find('\\', at + 1)) {
    text += static_cast<char>(std::stoi(argument.substr(at + 2, 2), nullptr, 16));
  }
  return text;
}

std::vector<std::string> argumentsIn(const std::string& list) {
  std::vector<std::string> arguments;
  for (size_t begin = 0; begin < list.size();) {
    const size_t end = std::min(list.find(", ", begin), list.size());
    const std::string argument = list.substr(begin, end - begin);
    arguments.push_back(argument[0] == '"' ? withoutHex(argument) : argument);
    begin = end + 2;
  }
  return arguments;
}

/** Nothing for a line that tells of something else. */
std::optional<SystemCall> callIn(const std::string& line) {
  const size_t open = line.find('(');
  const size_t equals = line.rfind(" = ");
  if (open == std::string::npos || equals == std::string::npos || line[0] == '+') {
    return std::nullopt;
  }
  const size_t close = line.rfind(')', equals);
  SystemCall call;
  call.name = line.substr(0, open);
  call.arguments = argumentsIn(line.substr(open + 1, close - open - 1));
  const std::string result = line.substr(equals + 3);
  call.result = result[0] == '?' ? -1 : std::strtoll(result.c_str(), nullptr, 0);
  return call;
}

}  // namespace

Tracer::Tracer(pid_t daemon, std::vector<std::string> options)
    : strace_(setupOf(daemon, std::move(options), directory_ / "calls")) {
  const bool known = eventually([this] {
    const bool ended = !strace_.running();  // asked first, so that no last words are missed
    attached_ = strace_.standardError().find(" attached") != std::string::npos;
    return attached_ || ended;
  });
  attached_ = attached_ && known;
}

std::vector<SystemCall> Tracer::calls() {
  if (strace_.running()) {
    kill(strace_.pid(), SIGTERM);  // detaches
    (void)strace_.waitForEnd();
  }
  std::vector<SystemCall> calls;
  std::istringstream lines(readText(directory_ / "calls"));
  for (std::string line; std::getline(lines, line);) {
    if (const auto call = callIn(line)) {
      calls.push_back(*call);
    }
  }
  return calls;
}

}  // namespace tevra::test
