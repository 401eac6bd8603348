#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <vector>

#include "tests/control/handler_eit_fixture.h"
#include "tests/support/raw_socket.h"
#include "tests/support/socket_waits.h"

// A MainTask that hangs costs a control call 2 s, and 50 ms for each further table.

namespace tevra::test {
namespace {

using fake::timesLogged;
using std::chrono::milliseconds;
using testing::AllOf;
using testing::ElementsAre;
using testing::Ge;
using testing::Le;

constexpr int kNotificationPort = 9256;
constexpr const char* kTimedOut = "Can't access to Notify server. EXCEPTION: open() timed out";

/** The kernel rounds up to its tick. */
auto isAbout(int patience) {
  return AllOf(Ge(milliseconds(patience)), Le(milliseconds(patience + 10)));
}

/** A MainTask that has listened and never accepts, with more connections waiting than it lets. */
class HandlerBesideAHungMainTask : public HandlerEIT {
 protected:
  HandlerBesideAHungMainTask() { setSteadyTOT(); }

  void hang() {
    listener_.emplace(kNotificationPort, 0);
    full_.emplace(kNotificationPort, 4);
    clearSocketWaits();
  }

  /** What the notifications since then have waited for. */
  static std::vector<milliseconds> waits() {
    const std::vector<milliseconds> all = socketWaits().connecting;
    clearSocketWaits();
    return all;
  }

 private:
  std::optional<RawListener> listener_;
  std::optional<FullBacklog> full_;
};

TEST_F(HandlerBesideAHungMainTask, WaitsTwoSecondsOncePerCall) {
  hang();
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 0, {}), makeEit(1, 0x51, 0, {})}));
  EXPECT_THAT(waits(), ElementsAre(isAbout(2000), isAbout(50)));
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {}), makeEit(2, 0x4E, 0, {})}));
  EXPECT_THAT(waits(), ElementsAre(isAbout(2000), isAbout(50)));
  EXPECT_EQ(4, timesLogged(3, kTimedOut));
}

TEST_F(HandlerBesideAHungMainTask, WaitsTwoSecondsOnceForATOTAndAllItsEITs) {
  handler_->setEITSchedule(mapOf({makeEit(1, 0x50, 0, {})}));
  handler_->setEITPresentFollowing(mapOf({makeEit(1, 0x4E, 0, {})}));
  hang();
  setTOT(12, 0, 0);
  EXPECT_THAT(waits(), ElementsAre(isAbout(2000), isAbout(50), isAbout(50)));
  setTOT(12, 0, 0);
  EXPECT_THAT(waits(), ElementsAre(isAbout(2000)));
  EXPECT_EQ(4, timesLogged(3, kTimedOut));
}

}  // namespace
}  // namespace tevra::test
