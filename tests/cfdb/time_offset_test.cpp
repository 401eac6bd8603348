#include "cfdb/time_offset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>

#include "cfdb/dvb_time.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/tables.h"

// How a TOT moves it: tests/control/si_control_handler_time_test.cpp.

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class TimeOffsetTest : public fake::PlatformTest {
 protected:
  TimeOffsetTest() { fake::platform().utcTime = kSystemTime; }

  /** Takes a TOT that is `seconds` ahead of the system clock. */
  bool update(int64_t seconds) {
    const bool restamp = updateAndFail(seconds);
    if (restamp) {
      offset_.noteRestamped();
    }
    return restamp;
  }

  /** The same, and what it asks for is not done. */
  bool updateAndFail(int64_t seconds) {
    fake::clearLog();
    return offset_.updateTimeOffset(makeTot(restampDVBTime(kSystemTime, -seconds)));
  }

  TimeOffset offset_;

 private:
  static constexpr uint64_t kSystemTime = uint64_t{60000} << 24;
};

TEST_F(TimeOffsetTest, IsNothingBeforeTheFirstTot) {
  EXPECT_EQ(offset_.timeOffset(), 0);
  EXPECT_FALSE(offset_.timeOffsetValid());
}

TEST_F(TimeOffsetTest, TheFirstTotRestampsWhateverItSays) {
  EXPECT_TRUE(update(59));
  EXPECT_EQ(offset_.timeOffset(), 0);
  EXPECT_TRUE(offset_.timeOffsetValid());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(TimeOffsetTest, OnlyAMinuteOrMoreIsAnotherOffset) {
  (void)update(0);
  EXPECT_FALSE(update(59));
  EXPECT_FALSE(update(-59));
  EXPECT_TRUE(update(60));
  EXPECT_EQ(offset_.timeOffset(), 60);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "DVB to System Time offset set to [60] secs"}));
  EXPECT_FALSE(update(1));
  EXPECT_TRUE(update(0));
  EXPECT_EQ(offset_.timeOffset(), 0);
}

TEST_F(TimeOffsetTest, AnUnsetClockChangesNothing) {
  fake::platform().isSystemTimeSetResult = 1;
  EXPECT_FALSE(update(600));
  EXPECT_EQ(offset_.timeOffset(), 0);
  EXPECT_FALSE(offset_.timeOffsetValid());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "System time not set. Time offset not calculated!"}));
  fake::platform().isSystemTimeSetResult = 0;
  EXPECT_TRUE(update(0));  // it is still the first
}

TEST_F(TimeOffsetTest, ARestampThatFailedIsAskedForAgain) {
  (void)update(0);
  EXPECT_TRUE(updateAndFail(60));
  EXPECT_TRUE(update(60));
  EXPECT_FALSE(update(60));
}

TEST_F(TimeOffsetTest, AResetForgetsIt) {
  (void)update(600);
  offset_.resetTimeOffset();
  EXPECT_EQ(offset_.timeOffset(), 0);
  EXPECT_FALSE(offset_.timeOffsetValid());
  EXPECT_TRUE(update(0));
  EXPECT_FALSE(update(0));
}

}  // namespace
}  // namespace tevra::test
