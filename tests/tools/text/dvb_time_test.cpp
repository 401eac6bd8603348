#include "tools/report/facts/stream_time.h"

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

// The example of EN 300 468 annex C: 93/10/13 12:45:00 is C079124500.
constexpr int64_t kExample = 0xC079124500;

TEST(StreamTime, ReadsTheStandardsExample) {
  const auto time = streamTime(kExample);
  ASSERT_TRUE(time.has_value());
  EXPECT_EQ("1993-10-13 12:45:00", dateAndTime(*time));
  EXPECT_EQ("Wed 1993-10-13", dayText(*time));
  EXPECT_EQ("12:45", clockText(*time));
}

TEST(StreamTime, IsNothingWhereDigitsAreNoneOrOutOfRange) {
  for (const int64_t clock : {0xFFFFFF, 0x240000, 0x126000, 0x120060, 0x0A0000, 0x00000F}) {
    EXPECT_FALSE(streamTime((int64_t{0xC079} << 24) | clock).has_value()) << clock;
  }
  EXPECT_TRUE(streamTime(0x0000000000).has_value());
  EXPECT_EQ("2038-04-22 23:59:59", dateAndTime(streamTime(0xFFFF235959).value()));
}

TEST(StreamTime, ReadsDurations) {
  EXPECT_EQ(45 * kMinute, secondsOf(0x004500));
  EXPECT_EQ(99 * kHour + 59 * kMinute + 59, secondsOf(0x995959));
  EXPECT_EQ(0, secondsOf(0));
  EXPECT_FALSE(secondsOf(0xFFFFFF).has_value());
  EXPECT_FALSE(secondsOf(0x006000).has_value());
}

TEST(StreamTime, SaysDurationsInWords) {
  EXPECT_EQ("0 s", durationText(0));
  EXPECT_EQ("45 min", durationText(45 * kMinute));
  EXPECT_EQ("1 h 30 min", durationText(90 * kMinute));
  EXPECT_EQ("2 h 20 s", durationText(2 * kHour + 20));
}

}  // namespace
}  // namespace tevra::tools::report
