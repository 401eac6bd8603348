#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/system/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/raw_socket.h"

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

TEST_F(DaemonConsole, StandardOutputStaysEmpty) {
  const auto process = start({"-c", "-l", "7"});
  ControlClient client;
  giveMultiplex(client);
  EXPECT_EQ(process->standardOutput(), "");
}

}  // namespace
}  // namespace tevra::test
