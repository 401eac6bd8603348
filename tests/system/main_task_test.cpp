#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <ctime>
#include <functional>
#include <memory>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

using fake::FakeMainTask;
using testing::ElementsAre;
using testing::SizeIs;
using testing::StartsWith;

using Clock = std::chrono::steady_clock;

constexpr const char* kRefused =
    "3 Can't access to Notify server. EXCEPTION: "
    "connect() failed: Connection refused";
constexpr const char* kNoAccess = "3 Can't access to Notify server. EXCEPTION: ";

class DaemonMainTask : public testing::Test {
 protected:
  TemporaryDirectory root_;
};

/** More than all the buffers between two processes hold. */
PMT hugePmt() {
  PMT pmt = televisionPmt();
  pmt.descriptors.push_back(descriptor(0x05, std::string(12'000'000, 'x')));
  return pmt;
}

TEST_F(DaemonMainTask, AbsentCostsOneErrorPerNotification) {
  const Daemon daemon(root_.path());
  ControlClient client;
  const auto errorsOf = [&](const std::function<void()>& call) {
    return upToLevel(daemon.linesOf(call), '4');
  };
  EXPECT_THAT(errorsOf([&] { client->setPAT(multiplexPat()); }), ElementsAre(kRefused));
  EXPECT_THAT(errorsOf([&] { client->setSDT(multiplexSdt()); }), ElementsAre(kRefused));
  EXPECT_THAT(errorsOf([&] { client->setPMT(televisionPmt()); }), ElementsAre(kRefused));
  EXPECT_THAT(errorsOf([&] { client->setCAT(multiplexCat()); }), ElementsAre(kRefused));
  EXPECT_THAT(errorsOf([&] { client->setTOT(totAt(std::time(nullptr))); }), ElementsAre(kRefused));
  EXPECT_THAT(errorsOf([&] {
                client->setEITSchedule(eitMap({eit(1, 0x50, 0), eit(2, 0x50, 0)}));
              }),
              ElementsAre(kRefused, kRefused));
}

TEST_F(DaemonMainTask, AbsentDoesNotKeepTablesFromBeingDerived) {
  const Daemon daemon(root_.path());
  ControlClient client;
  giveMultiplex(client);
  EXPECT_THAT(onlyOutput(client, televisionRequest()).pidItems, SizeIs(4));
}

TEST_F(DaemonMainTask, LateGetsWhatComesThen) {
  const Daemon daemon(root_.path());
  ControlClient client;
  client->setPAT(multiplexPat());
  FakeMainTask mainTask;
  client->setSDT(multiplexSdt());
  ASSERT_TRUE(mainTask.waitFor(1));
  EXPECT_THAT(mainTask.methods(),
              ElementsAre("notifySDT"));  // nothing is queued
}

TEST_F(DaemonMainTask, GoneAndBackIsNotifiedAgain) {
  auto mainTask = std::make_unique<FakeMainTask>();
  const Daemon daemon(root_.path());
  ControlClient client;
  client->setPAT(multiplexPat());
  EXPECT_TRUE(mainTask->waitFor(2));
  mainTask.reset();
  client->setPAT(multiplexPat());
  EXPECT_EQ(timesIn(daemon.logLines(), kRefused), 1);
  mainTask = std::make_unique<FakeMainTask>();
  client->setPAT(multiplexPat());
  EXPECT_TRUE(mainTask->waitFor(1));
}

TEST_F(DaemonMainTask, DyingAtEveryConnectionDoesNotEndTheDaemon) {
  RawListener mainTask(kFirstNotificationPort);
  mainTask.resetConnections();
  Daemon daemon(root_.path());
  ControlClient client;
  for (int call = 0; call < 20; ++call) {
    giveMultiplex(client);
  }
  EXPECT_TRUE(daemon.running());
}

TEST_F(DaemonMainTask, DyingWithinANotificationCostsOneError) {
  RawListener mainTask(kFirstNotificationPort);
  mainTask.resetConnectionsAfter(1'000'000);
  DaemonSetup setup;
  setup.level = 4;
  Daemon daemon(root_.path(), setup);
  ControlClient client;
  EXPECT_THAT(daemon.linesOf([&] { client->setPMT(hugePmt()); }),
              ElementsAre(StartsWith(kNoAccess)));
  EXPECT_TRUE(daemon.running());
  EXPECT_TRUE(client->sendCmd(7));
}

TEST_F(DaemonMainTask, ThatNeverReadsHoldsACallUpForSecondsOnly) {
  const RawListener mainTask(kFirstNotificationPort);
  DaemonSetup setup;
  setup.level = 4;
  Daemon daemon(root_.path(), setup);
  ControlClient client;
  const auto start = Clock::now();
  EXPECT_THAT(daemon.linesOf([&] { client->setPMT(hugePmt()); }),
              ElementsAre(StartsWith(kNoAccess)));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

TEST_F(DaemonMainTask, ThatReadsLateGetsAllOfALargeNotification) {
  const Daemon daemon(root_.path());
  const RawListener mainTask(kFirstNotificationPort);
  ControlClient client;
  PMT pmt = televisionPmt();
  constexpr size_t kSize = 1'000'000;
  pmt.descriptors.push_back(descriptor(0x05, std::string(kSize, 'x')));
  client->setPMT(pmt);
  EXPECT_EQ(daemon.logLines().back(), "7 MainTask notified from SI (new PMT)!!!");
  EXPECT_GT(mainTask.takeConnection().size(), kSize);  // though the sender has long closed it
}

TEST_F(DaemonMainTask, ThatIsBusyElsewhereDoesNotHoldUpOrdinaryTables) {
  const RawListener mainTask(kFirstNotificationPort);
  const Daemon daemon(root_.path());
  ControlClient client;
  const auto start = Clock::now();
  giveMultiplex(client);
  EXPECT_THAT(onlyOutput(client, televisionRequest()).pidItems, SizeIs(4));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(1));
  EXPECT_EQ(timesIn(daemon.logLines(), "7 MainTask notified from SI (new PMT)!!!"), 2);
}

TEST_F(DaemonMainTask, ThatTakesNoConnectionHoldsACallUpForSecondsOnly) {
  DaemonSetup setup;
  setup.level = 4;
  Daemon daemon(root_.path(), setup);
  const RawListener mainTask(kFirstNotificationPort, 0);
  const FullBacklog full(kFirstNotificationPort, 3);
  ControlClient client;
  const auto start = Clock::now();
  EXPECT_THAT(daemon.linesOf([&] { client->setSDT(multiplexSdt()); }),
              ElementsAre(StartsWith(kNoAccess)));
  EXPECT_LT(Clock::now() - start, std::chrono::seconds(20));
}

}  // namespace
}  // namespace tevra::test
