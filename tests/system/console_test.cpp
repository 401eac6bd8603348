#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <map>
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
using testing::Each;
using testing::ElementsAre;
using testing::IsSupersetOf;
using testing::MatchesRegex;

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

TEST_F(DaemonConsole, ALineIsLevelBlankAndMessage) {
  const Daemon daemon(root_.path());
  ControlClient client;
  giveMultiplex(client);
  (void)onlyOutput(client, televisionRequest());
  EXPECT_THAT(daemon.logLines(), Each(MatchesRegex("[3-7] [^ ].*")));
}

TEST_F(DaemonConsole, ATagStandsBeforeItsMessage) {
  const Daemon daemon(root_.path());
  ControlClient client;
  giveMultiplex(client);
  SrvOutputRequest request = televisionRequest();
  request.lastNodeSettings[7] = {lastNode(21, 1, {"spa", "eng"}), lastNode(22, 2, {"eng", "fra"})};
  std::map<int32_t, SPTSConfiguration> answer;
  EXPECT_THAT(daemon.linesOf([&] { client->getSrvOutputData(answer, request); }),
              IsSupersetOf({"7 fltr Adding new lang to list [spa]",  //
                            "7 fltr Adding new lang to list [eng]",
                            "7 fltr Language alredy Exists at langOutList [eng]",
                            "7 fltr Adding new lang to list [fra]"}));
}

TEST_F(DaemonConsole, AMessagesOwnNewlinesStay) {
  const Daemon daemon(root_.path());
  ControlClient client;
  thrift::in_module::SIService service;
  service.name = "one\n\ntwo %s";
  EXPECT_THAT(daemon.linesOf([&] { EXPECT_TRUE(client->SISetData(service)); }),
              ElementsAre("7 SISetData string: one", "", "two %s"));
}

TEST_F(DaemonConsole, ALongMessageIsNotCut) {
  const Daemon daemon(root_.path());
  ControlClient client;
  thrift::in_module::SIService service;
  service.name = std::string(100000, 'x');
  EXPECT_THAT(daemon.linesOf([&] { EXPECT_TRUE(client->SISetData(service)); }),
              ElementsAre("7 SISetData string: " + service.name));
}

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
}

TEST_F(DaemonConsole, LevelThreePrintsErrorsOnly) {
  const auto process = start({"-c", "-l", "3"});
  ControlClient client;
  client->setPAT(multiplexPat());
  client->setNIT(multiplexNit());
  const std::string directory = root_.path() + "/Tornel/";
  EXPECT_EQ(process->standardError(),
            "3 [MPTS0] Error reading file: " + directory + "TableStoreFile0\n" +
                "3 [MPTS0] Error reading tables from file\n" +
                "3 [MPTS0] Error reading file: " + directory + "EITTableVersionStoreFile0\n" +
                "3 [MPTS0] Error reading tables from file\n" +  //
                "3 setNIT\n");
}

TEST_F(DaemonConsole, WithoutTheOptionNothingReachesStandardError) {
  const auto process = start({"--level", "7"});
  ControlClient client;
  giveMultiplex(client);
  client->setNIT(multiplexNit());
  (void)onlyOutput(client, televisionRequest());
  EXPECT_EQ(process->standardError(), "");
  EXPECT_EQ(process->standardOutput(), "");
}

TEST_F(DaemonConsole, WithoutItTheRuntimesOwnWordsStayAwayToo) {
  const auto process = start({});
  RawConnection(kFirstControlPort).send("GET / HTTP/1.1\r\n\r\n");
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
  EXPECT_EQ(process->standardError(), "");
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

TEST_F(DaemonConsole, StandardOutputStaysEmpty) {
  const auto process = start({"-c", "-l", "7"});
  ControlClient client;
  giveMultiplex(client);
  EXPECT_EQ(process->standardOutput(), "");
}

}  // namespace
}  // namespace tevra::test
