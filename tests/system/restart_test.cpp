#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <map>
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

class DaemonRestart : public testing::Test {
 protected:
  /** What the television service's output is, with the multiplex given anew. */
  static SPTSConfiguration output(const SrvOutputRequest& request = televisionRequest()) {
    ControlClient client;
    giveMultiplex(client);
    return onlyOutput(client, request);
  }

  FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path()};
};

TEST_F(DaemonRestart, GivesTheSameAnswerToTheSameRequest) {
  const SPTSConfiguration before = output();
  daemon_.restart();
  EXPECT_EQ(output(), before);
}

TEST_F(DaemonRestart, ForgetsTheTablesThemselves) {
  (void)output();
  daemon_.restart();
  ControlClient client;
  std::map<int32_t, SPTSConfiguration> answer;
  client->getSrvOutputData(answer, televisionRequest());
  EXPECT_TRUE(answer.empty());
}

TEST_F(DaemonRestart, DropsTablesThatNobodyHasAskedForAtTheFifthTime) {
  const auto stored = [&] {
    return readRecord<thrift::in_module::TableStoreFile>(root_ / tableStoreFile(0)).tableStores;
  };
  constexpr const char* kErased = "5 [MPTS0] 1201 is erased from the table store struct";
  (void)output();
  for (int32_t restart = 1; restart <= 4; ++restart) {
    daemon_.restart();
    (void)output(radioRequest());  // writes the file
    EXPECT_EQ(stored().at(kTelevision).restartCounter, restart);
    EXPECT_EQ(timesIn(daemon_.logLines(), kErased), 0);
  }
  daemon_.restart();
  EXPECT_EQ(timesIn(daemon_.logLines(), kErased), 1);
  (void)output(radioRequest());
  EXPECT_THAT(stored(), testing::ElementsAre(testing::Key(kRadio)));
}

}  // namespace
}  // namespace tevra::test
