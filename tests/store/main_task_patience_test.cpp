#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "platform/module_utils.h"
#include "store/main_task_client.h"
#include "tests/fakes/fake_platform.h"
#include "tests/store/raw_main_task.h"
#include "tests/store/stopped_main_task.h"
#include "tests/support/raw_socket.h"
#include "tests/support/socket_waits.h"

// What the notifications of one control call wait for a MainTask that hangs.

namespace tevra::test {
namespace {

using std::chrono::milliseconds;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::Ge;
using testing::IsEmpty;
using testing::Le;
using testing::Not;

constexpr milliseconds kAtFirst(2000);
constexpr milliseconds kAfterTimeOut(50);
constexpr milliseconds kTick(10);

auto isAbout(milliseconds patience) {
  return AllOf(Ge(patience), Le(patience + kTick));
}

class MainTaskPatience : public fake::PlatformTest {
 protected:
  MainTaskPatience() { clearSocketWaits(); }

  /** One level-3 line with `reason` for each of `count` notifications, and none else. */
  static void expectFailures(size_t count, const std::string& reason) {
    const fake::LogLine failure{kLogError, "",
                                "Can't access to Notify server. EXCEPTION: " + reason};
    EXPECT_EQ(fake::logLines(), std::vector<fake::LogLine>(count, failure));
  }

  Patience patience_;
};

/** More than all the buffers between two processes hold. */
EIT largeEit() {
  EIT eit;
  eit.events.resize(1);
  eit.events[0].descriptors.resize(1);
  eit.events[0].descriptors[0].data.assign(12'000'000, 'x');
  return eit;
}

TEST_F(MainTaskPatience, IsFiftyMillisecondsEachOnceTheBacklogIsFull) {
  const RawMainTask mainTask(0);
  const FullBacklog others(mainTask.port(), 4);
  EXPECT_FALSE(notifyEITPresentFollowing(mainTask.port(), EIT(), patience_));
  EXPECT_FALSE(notifyEITSchedule(mainTask.port(), EIT(), patience_));
  EXPECT_FALSE(notifyTOT(mainTask.port(), TOT(), patience_));
  EXPECT_THAT(socketWaits().connecting,
              ElementsAre(isAbout(kAtFirst), isAbout(kAfterTimeOut), isAbout(kAfterTimeOut)));
  expectFailures(3, "open() timed out");
}

TEST_F(MainTaskPatience, IsFiftyMillisecondsEachOnceAStoppedProcessTakesNoMore) {
  const StoppedMainTask mainTask;
  const EIT eit = largeEit();
  EXPECT_FALSE(notifyEITSchedule(mainTask.port(), eit, patience_));
  clearSocketWaits();
  EXPECT_FALSE(notifyEITSchedule(mainTask.port(), eit, patience_));
  EXPECT_FALSE(notifyEITPresentFollowing(mainTask.port(), eit, patience_));
  const SocketWaits waits = socketWaits();
  EXPECT_THAT(waits.connecting, ElementsAre(isAbout(kAfterTimeOut), isAbout(kAfterTimeOut)));
  EXPECT_THAT(waits.sending, AllOf(Not(IsEmpty()), Each(Le(kAfterTimeOut + kTick))));
  expectFailures(3, "send timeout expired");
}

TEST_F(MainTaskPatience, IsTwoSecondsForWhatIsNotifiedAlone) {
  const RawMainTask mainTask;
  EXPECT_TRUE(notifyPAT(mainTask.port(), PAT()));
  EXPECT_TRUE(requestConfiguration({0, mainTask.port()}));
  EXPECT_THAT(socketWaits().connecting, ElementsAre(isAbout(kAtFirst), isAbout(kAtFirst)));
}

TEST_F(MainTaskPatience, IsNotUsedUpByARefusedConnection) {
  const RefusingPort nobody;
  EXPECT_FALSE(notifyEITSchedule(nobody.port(), EIT(), patience_));
  EXPECT_FALSE(notifyTOT(nobody.port(), TOT(), patience_));
  EXPECT_THAT(socketWaits().connecting, Each(isAbout(kAtFirst)));
  expectFailures(2, "connect() failed: Connection refused");
}

TEST_F(MainTaskPatience, IsEnoughAfterATimeOutForAMainTaskThatTakesCalls) {
  RawMainTask mainTask;
  patience_.perNotification = kAfterTimeOut;
  EXPECT_TRUE(notifyEITSchedule(mainTask.port(), EIT(), patience_));
  mainTask.accept();
  EXPECT_EQ(mainTask.readToEnd().substr(12, 17), "notifyEITSchedule");
}

}  // namespace
}  // namespace tevra::test
