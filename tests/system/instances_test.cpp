#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <string>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;

constexpr int32_t kInstances = 4;

/** The daemons of all four MPTS in one configuration root, each with its MainTask. */
class DaemonInstances : public testing::Test {
 protected:
  DaemonInstances() {
    for (int32_t index = 0; index < kInstances; ++index) {
      mainTasks_.push_back(std::make_unique<FakeMainTask>(index));
      DaemonSetup setup;
      setup.set = index;
      daemons_.push_back(std::make_unique<Daemon>(root_.path(), setup));
    }
  }

  TemporaryDirectory root_;
  std::vector<std::unique_ptr<FakeMainTask>> mainTasks_;
  std::vector<std::unique_ptr<Daemon>> daemons_;
};

TEST_F(DaemonInstances, AreServedSideBySide) {
  std::vector<std::unique_ptr<ControlClient>> clients;
  for (int32_t index = 0; index < kInstances; ++index) {
    clients.push_back(std::make_unique<ControlClient>(index));
    EXPECT_TRUE((*clients.back())->sendCmd(7));
  }
  for (const auto& client : clients) {
    giveMultiplex(*client);
    EXPECT_EQ(onlyOutput(*client, televisionRequest()).outputTables.dvbTables.pat.version, 1);
  }
}

TEST_F(DaemonInstances, OutliveEachOther) {
  daemons_[1]->kill();
  for (const int32_t index : {0, 2, 3}) {
    ControlClient client(index);
    EXPECT_TRUE(client->sendCmd(7));
  }
  daemons_[1]->restart();
  ControlClient client(1);
  EXPECT_TRUE(client->sendCmd(7));
}

TEST_F(DaemonInstances, ASecondOneOfTheSameMptsAborts) {
  const auto second = runDaemon(root_.path(), {"--set", "2", "--console"});
  const auto end = second->waitForEnd();
  ASSERT_TRUE(end);
  EXPECT_EQ(end->signal, SIGABRT);
  EXPECT_THAT(second->standardError(),
              testing::HasSubstr("4 [MPTS2] Tornel listening on port [9226]\n"));
  EXPECT_THAT(second->standardError(), testing::Not(testing::HasSubstr("started ...")));
  ControlClient client(2);
  EXPECT_TRUE(client->sendCmd(7));
}

}  // namespace
}  // namespace tevra::test
