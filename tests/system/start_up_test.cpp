#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ctime>
#include <filesystem>
#include <ostream>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"
#include "tests/system/record_files.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::ElementsAre;
using testing::StartsWith;

class DaemonStart : public testing::Test {
 protected:
  TemporaryDirectory root_;
};

TEST_F(DaemonStart, LogsEveryStepInOrder) {
  FakeMainTask mainTask;
  const Daemon daemon(root_.path());
  EXPECT_THAT(daemon.logLines(), ElementsAre("4 [MPTS0] Tornel listening on port [9224]",
                                             "4 [MPTS0] notifying to port [9256]",  //
                                             "4 IN mod slot [3] PID poll [100/299]",
                                             "3 [MPTS0] Error reading file: " + root_.path() +
                                                 "/Tornel/TableStoreFile0",
                                             "3 [MPTS0] Error reading tables from file",
                                             "3 [MPTS0] Error reading file: " + root_.path() +
                                                 "/Tornel/EITTableVersionStoreFile0",
                                             "3 [MPTS0] Error reading tables from file",  //
                                             "7 I need Configuration!!!",
                                             "6 Started threaded simple server, on port: 9224",  //
                                             "4 Tornel 0 started ..."));
  ASSERT_TRUE(mainTask.waitFor(1));
  EXPECT_THAT(mainTask.methods(), ElementsAre("requestConfiguration"));
}

TEST_F(DaemonStart, OfAnotherMptsNamesItsIndexPortsAndPool) {
  FakeMainTask mainTask(3);
  DaemonSetup setup;
  setup.set = 3;
  const Daemon daemon(root_.path(), setup);
  EXPECT_THAT(daemon.logLines(), ElementsAre("4 [MPTS3] Tornel listening on port [9227]",
                                             "4 [MPTS3] notifying to port [9259]",  //
                                             "4 IN mod slot [3] PID poll [700/899]",
                                             "3 [MPTS3] Error reading file: " + root_.path() +
                                                 "/Tornel/TableStoreFile3",
                                             "3 [MPTS3] Error reading tables from file",
                                             "3 [MPTS3] Error reading file: " + root_.path() +
                                                 "/Tornel/EITTableVersionStoreFile3",
                                             "3 [MPTS3] Error reading tables from file",  //
                                             "7 I need Configuration!!!",
                                             "6 Started threaded simple server, on port: 9227",  //
                                             "4 Tornel 3 started ..."));
  EXPECT_TRUE(mainTask.waitFor(1));
}

TEST_F(DaemonStart, RecoversSavedTablesAndVersions) {
  FakeMainTask mainTask;
  Daemon daemon(root_.path());
  {
    ControlClient client;
    giveMultiplex(client);
    (void)onlyOutput(client, televisionRequest());  // saves the tables
    client->setTOT(totAt(std::time(nullptr)));
    client->setEITSchedule(eitMap({eit(kTelevision, 0x50, 0)}));  // saves the versions
  }
  daemon.restart();
  EXPECT_THAT(
      daemon.logLines(),
      ElementsAre("4 [MPTS0] Tornel listening on port [9224]", "4 [MPTS0] notifying to port [9256]",
                  "4 IN mod slot [3] PID poll [100/299]", "7 [MPTS0] Recovering saved DVB tables",
                  "7 [MPTS0] Recovering saved EIT table versions", "7 I need Configuration!!!",
                  "6 Started threaded simple server, on port: 9224", "4 Tornel 0 started ..."));
}

TEST_F(DaemonStart, WithoutMainTaskLogsOneErrorAndGoesOn) {
  const Daemon daemon(root_.path());
  const Lines lines = daemon.logLines();
  // What the runtime itself has to say about it is for debugging only.
  EXPECT_THAT(
      upToLevel(lines, '6'),
      ElementsAre(
          "4 [MPTS0] Tornel listening on port [9224]", "4 [MPTS0] notifying to port [9256]",
          "4 IN mod slot [3] PID poll [100/299]", StartsWith("3 [MPTS0] Error reading file: "),
          "3 [MPTS0] Error reading tables from file", StartsWith("3 [MPTS0] Error reading file: "),
          "3 [MPTS0] Error reading tables from file",
          "3 Can't access to Notify server. EXCEPTION: connect() failed: "
          "Connection refused",
          "6 Started threaded simple server, on port: 9224", "4 Tornel 0 started ..."));
  EXPECT_EQ(timesIn(lines, "7 I need Configuration!!!"), 0);
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
}

TEST_F(DaemonStart, AsksAgainAfterEveryRestart) {
  FakeMainTask mainTask;
  Daemon daemon(root_.path());
  daemon.restart();
  ASSERT_TRUE(mainTask.waitFor(2));
  EXPECT_THAT(mainTask.methods(), ElementsAre("requestConfiguration", "requestConfiguration"));
}

TEST_F(DaemonStart, ServesOnceTheStartIsTold) {
  const Daemon daemon(root_.path());
  ControlClient client;
  thrift::in_module::SIService service;
  client->getSIData(service);
  EXPECT_EQ(service.name, "");
}

TEST_F(DaemonStart, WritesNoFile) {
  FakeMainTask mainTask;
  const Daemon daemon(root_.path());
  EXPECT_TRUE(std::filesystem::is_empty(root_.path()));
}

struct Pool {
  const char* name;
  const char* type;
  const char* slot;
  int32_t set;
  const char* line;
};

void PrintTo(const Pool& pool, std::ostream* out) {
  *out << "type " << pool.type << " slot " << pool.slot << " MPTS " << pool.set;
}

class DaemonPool : public DaemonStart, public testing::WithParamInterface<Pool> {};

TEST_P(DaemonPool, FollowsModuleTypeSlotAndIndex) {
  DaemonSetup setup;
  setup.set = GetParam().set;
  setup.environment = {{"TEVRA_MODULE_TYPE", GetParam().type},
                       {"TEVRA_MODULE_SLOT", GetParam().slot}};
  const Daemon daemon(root_.path(), setup);
  EXPECT_EQ(timesIn(daemon.logLines(), GetParam().line), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Pools, DaemonPool,
    testing::Values(Pool{"Type5Mpts1", "5", "3", 1, "4 IN mod slot [3] PID poll [300/499]"},
                    Pool{"Slot4Mpts2", "5", "4", 2, "4 IN mod slot [4] PID poll [1300/1499]"},
                    Pool{"Type6Mpts1", "6", "3", 1, "4 IN mod slot [3] PID poll [500/899]"},
                    Pool{"Type0Slot5", "0", "5", 0, "4 IN mod slot [5] PID poll [1700/2099]"},
                    Pool{"UnknownType", "9", "3", 0, "4 IN mod slot [3] PID poll [100/99]"}),
    [](const auto& pool) { return std::string(pool.param.name); });

TEST_F(DaemonStart, OnAnUnknownModuleTypeComplainsTwiceAndServesTheFirstMpts) {
  DaemonSetup setup;
  setup.environment = {{"TEVRA_MODULE_TYPE", "9"}};
  const Daemon daemon(root_.path(), setup);
  const Lines lines = daemon.logLines();
  ASSERT_GE(lines.size(), 5U);
  EXPECT_EQ(lines[0], "3 Tornel: Module type [9] not supported!");
  EXPECT_EQ(lines[3], "3 [getPIDPollSizePerMPTS] Module type [9] not supported!");
  EXPECT_EQ(lines[4], "4 IN mod slot [3] PID poll [100/99]");
}

}  // namespace
}  // namespace tevra::test
