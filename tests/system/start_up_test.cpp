#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/service_manager.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::ElementsAre;

class DaemonStart : public testing::Test {
 protected:
  TemporaryDirectory root_;
};

TEST_F(DaemonStart, LogsEveryStepInOrderAndWritesNoFile) {
  FakeMainTask mainTask;
  const Daemon daemon(root_.path());
  EXPECT_THAT(
      daemon.logLines(),
      ElementsAre(
          "4 [MPTS0] Tornel listening on port [9224]",
          "4 [MPTS0] notifying to port [9256]",  //
          "4 IN mod slot [3] PID poll [100/299]",
          "3 [MPTS0] Error reading file: " + root_.path() + "/Tornel/TableStoreFile0",
          "7 [MPTS0] Reason: cannot open: No such file or directory",
          "3 [MPTS0] Error reading tables from file",
          "3 [MPTS0] Error reading file: " + root_.path() + "/Tornel/EITTableVersionStoreFile0",
          "7 [MPTS0] Reason: cannot open: No such file or directory",
          "3 [MPTS0] Error reading tables from file",  //
          "7 I need Configuration!!!",
          "6 Started threaded simple server, on port: 9224",  //
          "4 Tornel 0 started ..."));
  ASSERT_TRUE(mainTask.waitFor(1));
  EXPECT_THAT(mainTask.methods(), ElementsAre("requestConfiguration"));
  EXPECT_TRUE(std::filesystem::is_empty(root_.path()));
}

TEST_F(DaemonStart, TakesPortAndPoolFromIndexTypeAndSlotAndNoPortFromItsOption) {
  DaemonSetup setup;
  setup.set = 1;
  setup.environment = {{"TEVRA_MODULE_TYPE", "6"}, {"TEVRA_MODULE_SLOT", "4"}};
  setup.arguments = {"-p", "9210"};
  const Daemon daemon(root_.path(), setup);
  const Lines lines = daemon.logLines();
  EXPECT_EQ(timesIn(lines, "4 [MPTS1] Tornel listening on port [9225]"), 1);
  EXPECT_EQ(timesIn(lines, "4 IN mod slot [4] PID poll [1300/1699]"), 1);
  EXPECT_TRUE(isListening(9225));
  EXPECT_FALSE(isListening(9210));
}

TEST_F(DaemonStart, IsSignalledOnceThePortIsOpenAndThenTheWatchdogIsKicked) {
  const ServiceManager manager;
  const auto process = runDaemon(root_.path(), {}, {{"NOTIFY_SOCKET", manager.path()}});
  EXPECT_EQ(manager.next(), "READY=1");
  EXPECT_TRUE(isListening(9224));
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
}

}  // namespace
}  // namespace tevra::test
