#include "cfdb/time_offset.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "cfdb/dvb_time.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr int64_t kMjd = 60000;
constexpr int64_t kDay = 86400;

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
  static constexpr uint64_t kSystemTime = uint64_t{kMjd} << 24;
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

TEST_F(TimeOffsetTest, IsComparedWithTheOneInUseAndNotWithTheLastSeen) {
  const std::vector<std::pair<int64_t, int64_t>> secondsAndThenInUse = {
      {30, 0},  {59, 0},    {30, 0},  {59, 0}, {60, 60},   {119, 60}, {1, 60},
      {60, 60}, {120, 120}, {60, 60}, {0, 0},  {-60, -60}, {-1, -60}, {-60, -60}};
  for (const auto& [seconds, inUse] : secondsAndThenInUse) {
    (void)update(seconds);
    EXPECT_EQ(offset_.timeOffset(), inUse) << seconds;
    EXPECT_TRUE(offset_.timeOffsetValid()) << seconds;
  }
}

TEST_F(TimeOffsetTest, OfADayAndMoreCrossesDates) {
  EXPECT_TRUE(update(2 * kDay + 1));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "DVB to System Time offset set to [172801] secs"}));
  EXPECT_TRUE(update(-kDay - 1));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "DVB to System Time offset set to [-86401] secs"}));
}

TEST_F(TimeOffsetTest, OnlyTheLowThirtyTwoBitsAreCompared) {
  constexpr int64_t kTwoTo32 = int64_t{1} << 32;
  (void)update(kTwoTo32 + 59);
  EXPECT_EQ(offset_.timeOffset(), 0);
  EXPECT_THAT(fake::logLines(), IsEmpty());
  (void)update(kTwoTo32 + 60);
  EXPECT_EQ(offset_.timeOffset(), kTwoTo32 + 60);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "DVB to System Time offset set to [4294967356] secs"}));
  (void)update(1);
  EXPECT_EQ(offset_.timeOffset(), kTwoTo32 + 60);
}

TEST_F(TimeOffsetTest, HalfOfTheThirtyTwoBitRangeIsADifference) {
  constexpr int64_t kTwoTo31 = int64_t{1} << 31;
  EXPECT_TRUE(update(kTwoTo31));
  EXPECT_EQ(offset_.timeOffset(), kTwoTo31);
  EXPECT_TRUE(update(0));
  EXPECT_EQ(offset_.timeOffset(), 0);
}

TEST_F(TimeOffsetTest, ExtremeTimesAreTaken) {
  for (const uint64_t time : {UINT64_MAX, uint64_t{1} << 63, uint64_t{INT64_MAX}, uint64_t{0}}) {
    (void)offset_.updateTimeOffset(makeTot(time));
  }
  EXPECT_EQ(offset_.timeOffset(), -kMjd * kDay);
}

TEST_F(TimeOffsetTest, AnUnsetClockChangesNothing) {
  for (const int unset : {1, -1}) {
    fake::platform().isSystemTimeSetResult = unset;
    EXPECT_FALSE(update(600));
    EXPECT_EQ(offset_.timeOffset(), 0);
    EXPECT_FALSE(offset_.timeOffsetValid());
    EXPECT_THAT(fake::logLines(),
                ElementsAre(LogLine{4, "", "System time not set. Time offset not calculated!"}));
  }
  fake::platform().isSystemTimeSetResult = 0;
  EXPECT_TRUE(update(0));  // it is still the first
}

TEST_F(TimeOffsetTest, StaysValidWhenTheClockIsLostLater) {
  (void)update(600);
  fake::platform().isSystemTimeSetResult = 1;
  EXPECT_FALSE(update(1200));
  EXPECT_EQ(offset_.timeOffset(), 600);
  EXPECT_TRUE(offset_.timeOffsetValid());
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
