#include "cfdb/dvb_time.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <vector>

#include "tests/support/tables.h"

namespace tevra::test {
namespace {

constexpr int64_t kDay = 86400;
constexpr uint64_t kMjd = 60000;
constexpr uint64_t kGreatestMjd = (uint64_t{1} << 40) - 1;
constexpr uint64_t kAllOnes = std::numeric_limits<uint64_t>::max();

TEST(DvbTimeDifference, IsPositiveWhenTheSecondTimeIsLater) {
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 11, 59, 0), dvbTime(kMjd, 12, 0, 0)), 60);
}

TEST(DvbTimeDifference, IsNegativeWhenTheSecondTimeIsEarlier) {
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 12, 0, 0), dvbTime(kMjd, 11, 59, 0)), -60);
}

TEST(DvbTimeDifference, OfATimeToItselfIsZero) {
  for (const uint64_t time : {uint64_t{0}, dvbTime(kMjd, 23, 59, 59), kAllOnes}) {
    EXPECT_EQ(dvbTimeDifference(time, time), 0) << std::hex << time;
  }
}

TEST(DvbTimeDifference, CountsHoursMinutesAndSeconds) {
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 0, 0, 0), dvbTime(kMjd, 0, 0, 1)), 1);
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 0, 0, 0), dvbTime(kMjd, 0, 1, 0)), 60);
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 0, 0, 0), dvbTime(kMjd, 1, 0, 0)), 3600);
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 1, 2, 3), dvbTime(kMjd, 23, 59, 59)),
            kDay - 1 - (3600 + 2 * 60 + 3));
}

TEST(DvbTimeDifference, CrossesMidnight) {
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd, 23, 59, 59), dvbTime(kMjd + 1, 0, 0, 0)), 1);
  EXPECT_EQ(dvbTimeDifference(dvbTime(kMjd + 1, 0, 0, 0), dvbTime(kMjd, 23, 59, 59)), -1);
}

TEST(DvbTimeDifference, PassesTheLimitsOf32BitSeconds) {
  EXPECT_EQ(dvbTimeDifference(0, dvbTime(0xFFFF, 0, 0, 0)), 0xFFFF * kDay);
  EXPECT_EQ(dvbTimeDifference(dvbTime(0xFFFF, 0, 0, 0), 0), -0xFFFF * kDay);
}

TEST(DvbTimeDifference, TakesEveryBitFrom24UpAsTheDate) {
  EXPECT_EQ(dvbTimeDifference(0, kGreatestMjd << 24), static_cast<int64_t>(kGreatestMjd) * kDay);
  EXPECT_EQ(dvbTimeDifference(kGreatestMjd << 24, 0), -static_cast<int64_t>(kGreatestMjd) * kDay);
}

TEST(DvbTimeDifference, CountsDigitsAboveNineAsTheyStand) {
  constexpr int64_t kDigits = 15 * 10 + 15;
  EXPECT_EQ(dvbTimeDifference(0, 0x0000FF), kDigits);
  EXPECT_EQ(dvbTimeDifference(0, 0x00FF00), kDigits * 60);
  EXPECT_EQ(dvbTimeDifference(0, 0xFF0000), kDigits * 3600);
  EXPECT_EQ(dvbTimeDifference(0, kAllOnes),
            static_cast<int64_t>(kGreatestMjd) * kDay + kDigits * 3600 + kDigits * 60 + kDigits);
}

TEST(RestampDvbTime, MovesEventsEarlierWhenTheBroadcastClockIsAhead) {
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 12, 30, 0), 60), dvbTime(kMjd, 12, 29, 0));
}

TEST(RestampDvbTime, MovesEventsLaterWhenTheBroadcastClockIsBehind) {
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 12, 30, 0), -60), dvbTime(kMjd, 12, 31, 0));
}

TEST(RestampDvbTime, LeavesATimeAloneWhenTheOffsetIsZero) {
  for (const uint64_t time : {uint64_t{0}, dvbTime(0, 0, 0, 1), dvbTime(kMjd, 23, 59, 59),
                              dvbTime(0xFFFF, 10, 9, 8), dvbTime(kGreatestMjd, 23, 59, 59)}) {
    EXPECT_EQ(restampDVBTime(time, 0), time) << std::hex << time;
  }
}

TEST(RestampDvbTime, GoesBackOverMidnightIntoThePreviousDay) {
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 0, 0, 30), 60), dvbTime(kMjd - 1, 23, 59, 30));
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 0, 0, 0), 1), dvbTime(kMjd - 1, 23, 59, 59));
}

TEST(RestampDvbTime, GoesForwardOverMidnightIntoTheNextDay) {
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 23, 59, 30), -60), dvbTime(kMjd + 1, 0, 0, 30));
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 23, 59, 59), -1), dvbTime(kMjd + 1, 0, 0, 0));
}

TEST(RestampDvbTime, MovesByWholeDaysAndYears) {
  const uint64_t time = dvbTime(kMjd, 1, 2, 3);
  EXPECT_EQ(restampDVBTime(time, kDay), dvbTime(kMjd - 1, 1, 2, 3));
  EXPECT_EQ(restampDVBTime(time, -3652 * kDay), dvbTime(kMjd + 3652, 1, 2, 3));
  EXPECT_EQ(restampDVBTime(time, static_cast<int64_t>(kMjd) * kDay), dvbTime(0, 1, 2, 3));
}

TEST(RestampDvbTime, GivesDecimalDigitsForEverySecondOfADay) {
  const uint64_t midnight = dvbTime(kMjd, 0, 0, 0);
  for (int second = 0; second < kDay; ++second) {
    const uint64_t expected = dvbTime(kMjd, second / 3600, second / 60 % 60, second % 60);
    ASSERT_EQ(restampDVBTime(midnight, -second), expected) << second;
  }
}

TEST(RestampDvbTime, IsUndoneByTheOppositeOffset) {
  for (const int64_t offset : {1, 59, 60, 3599, 86399, 86400, 86401, 1234567, -1, -86401}) {
    const uint64_t time = dvbTime(kMjd, 17, 45, 12);
    const uint64_t moved = restampDVBTime(time, offset);
    EXPECT_EQ(restampDVBTime(moved, -offset), time) << offset;
    EXPECT_EQ(dvbTimeDifference(moved, time), offset);
  }
}

TEST(RestampDvbTime, ClampsWhatFallsBeforeDayZero) {
  EXPECT_EQ(restampDVBTime(dvbTime(0, 0, 0, 30), 30), 0U);
  EXPECT_EQ(restampDVBTime(dvbTime(0, 0, 0, 30), 31), 0U);
  EXPECT_EQ(restampDVBTime(0, 1), 0U);
  EXPECT_EQ(restampDVBTime(dvbTime(kMjd, 12, 0, 0), dvbTimeDifference(0, kAllOnes)), 0U);
}

TEST(RestampDvbTime, NormalisesDigitsThatAreNoTime) {
  // 25:61:61 is 1 day, 2 hours, 2 minutes and 1 second.
  EXPECT_EQ(restampDVBTime(kMjd << 24 | 0x256161, 0), dvbTime(kMjd + 1, 2, 2, 1));
  // FF counts as 165: 165 hours, 165 minutes and 165 seconds are 6 days and 23:47:45.
  EXPECT_EQ(restampDVBTime(kMjd << 24 | 0xFFFFFF, 0), dvbTime(kMjd + 6, 23, 47, 45));
  EXPECT_EQ(restampDVBTime(kMjd << 24 | 0x0A0B0C, 0), dvbTime(kMjd, 10, 11, 12));
}

TEST(RestampDvbTime, KeepsDatesBeyond16Bits) {
  EXPECT_EQ(restampDVBTime(dvbTime(0xFFFF, 23, 59, 59), -1), dvbTime(0x10000, 0, 0, 0));
  EXPECT_EQ(restampDVBTime(dvbTime(0x10000, 0, 0, 0), 1), dvbTime(0xFFFF, 23, 59, 59));
}

TEST(RestampDvbTime, DropsTheBitsOfADateThatNoLongerFits) {
  EXPECT_EQ(restampDVBTime(dvbTime(kGreatestMjd, 23, 59, 59), -1), 0U);
  EXPECT_EQ(restampDVBTime(kAllOnes, dvbTimeDifference(kAllOnes, 0)) & 0xFFFFFF,
            dvbTime(0, 23, 35, 30));
}

}  // namespace
}  // namespace tevra::test
