#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;

class DaemonConsole : public testing::Test {
 protected:
  /** Starts the daemon of MPTS 0 without waiting for a log line. */
  std::unique_ptr<ChildProcess> start(const std::vector<std::string>& arguments) {
    auto process = runDaemon(root_.path(), arguments);
    EXPECT_TRUE(eventually([] { return isListening(kFirstControlPort); }));
    return process;
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
};

TEST_F(DaemonConsole, TheLevelIsFiveUnlessGiven) {
  const auto process = start({"--console"});
  ControlClient client;
  client->setPAT(multiplexPat());
  client->setBAT(multiplexBat());
  const std::string log = process->standardError();
  EXPECT_THAT(log, testing::StartsWith("4 [MPTS0] Tornel listening on port [9224]\n"));
  EXPECT_THAT(log, testing::EndsWith("4 MainTask notified from SI (new cf PAT)!!!\n"
                                     "3 setBAT\n"));
  EXPECT_THAT(log, testing::Not(testing::ContainsRegex("(^|\n)[67] ")));
  EXPECT_EQ(process->standardOutput(), "");
}

TEST_F(DaemonConsole, WithoutTheOptionNothingReachesStandardErrorNotEvenTheRuntimesOwnWords) {
  const auto process = start({"--level", "7"});
  RawConnection(kFirstControlPort).send("GET / HTTP/1.1\r\n\r\n");
  ControlClient client;
  giveMultiplex(client);
  client->setNIT(multiplexNit());
  (void)onlyOutput(client, televisionRequest());
  EXPECT_EQ(process->standardError(), "");
  EXPECT_EQ(process->standardOutput(), "");
}

/** The reading end of a pipe that has a name. */
class PipeReader {
 public:
  explicit PipeReader(std::string path) : path_(std::move(path)) {
    if (mkfifo(path_.c_str(), 0600) != 0) {
      throw std::runtime_error("cannot make " + path_);
    }
    pipe_ = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);  // waits for no writer
  }
  ~PipeReader() { goAway(); }
  PipeReader(const PipeReader&) = delete;
  PipeReader& operator=(const PipeReader&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }

  /** All that has been written until `text` has come; false when it does not within kPatience. */
  [[nodiscard]] bool waitFor(const std::string& text) {
    return eventually([&] {
      std::array<char, 4096> part = {};
      const ssize_t length = read(pipe_, part.data(), part.size());
      received_.append(part.data(), length > 0 ? static_cast<size_t>(length) : 0);
      return received_.find(text) != std::string::npos;
    });
  }

  void goAway() {
    if (pipe_ >= 0) {
      close(std::exchange(pipe_, -1));
    }
  }

 private:
  const std::string path_;
  int pipe_ = -1;
  std::string received_;
};

TEST_F(DaemonConsole, AReaderThatGoesAwayDoesNotEndTheDaemon) {
  PipeReader reader(root_.path() + "/console");
  // A shell gives the pipe to the daemon, with the signal's default action whoever runs the test.
  ChildProcess process({{"/usr/bin/env", "--default-signal=PIPE", "sh", "-c",
                         R"(exec "$0" --console --level 7 2>"$1")", daemonPath(), reader.path()},
                        {{"TEVRA_CONF_ROOT", root_.path()}}});
  ASSERT_TRUE(reader.waitFor("4 Tornel 0 started ..."));
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
  ASSERT_TRUE(reader.waitFor("7 SI sendCmd"));
  reader.goAway();
  EXPECT_TRUE(client->sendCmd(7));  // logs a line, which nobody reads
  EXPECT_TRUE(client->sendCmd(7));
  EXPECT_TRUE(process.running());
}

}  // namespace
}  // namespace tevra::test
