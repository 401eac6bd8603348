#include "tools/text/dvb_time.h"

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

constexpr int64_t kAllOnes = 0xFFFFFFFFFF;

/** On the day of the example of EN 300 468 annex C: 93/10/13 12:45:00 is C079124500. */
int64_t exampleAt(int64_t clock) {
  return (int64_t{0xC079} << 24) | clock;
}

TEST(DvbTime, ReadsTheStandardsExample) {
  EXPECT_EQ("1993-10-13 12:45:00 UTC", utcTimeText(exampleAt(0x124500)));
  const StreamTime time = streamTime(exampleAt(0x124500)).value();
  EXPECT_EQ(750516300, time - kUnixEpoch);
  EXPECT_EQ("1993-10-13 12:45:00", dateAndTime(time));
  EXPECT_EQ("Wed 1993-10-13", dayText(time));
  EXPECT_EQ("12:45", clockText(time));
}

TEST(DvbTime, ReachesFromTheFirstDayToTheLast) {
  EXPECT_EQ("1858-11-17 00:00:00 UTC", utcTimeText(0));
  EXPECT_EQ("1858-11-17 00:00:00", dateAndTime(streamTime(0).value()));
  EXPECT_EQ("2038-04-22 23:59:59 UTC", utcTimeText(0xFFFF235959));
  EXPECT_EQ("2038-04-22 23:59:59", dateAndTime(streamTime(0xFFFF235959).value()));
}

TEST(DvbTime, KnowsLeapDays) {
  EXPECT_EQ("2024-02-29", dateAndTime(60369 * kDay).substr(0, 10));
  EXPECT_EQ("2024-03-01", dateAndTime(60370 * kDay).substr(0, 10));
  EXPECT_EQ("1900-03-01", dateAndTime(15079 * kDay).substr(0, 10));
}

TEST(DvbTime, ThatCannotBeIsShownAsItIsCodedAndReckonedWithNowhere) {
  const std::vector<std::pair<int64_t, std::string>> clocks = {
      {0x240000, "24:00:00"}, {0x290000, "29:00:00"}, {0x126000, "12:60:00"},
      {0x120060, "12:00:60"}, {0x0A0000, "0A:00:00"}, {0x00000F, "00:00:0F"},
      {0xFFFFFF, "FF:FF:FF"}};
  for (const auto& [clock, text] : clocks) {
    EXPECT_FALSE(streamTime(exampleAt(clock))) << text;
    EXPECT_EQ("1993-10-13 " + text + " UTC", utcTimeText(exampleAt(clock)));
  }
}

TEST(DvbTime, IsUndefinedWhereAllItsBitsAreSet) {
  EXPECT_EQ("undefined", utcTimeText(kAllOnes));
  EXPECT_FALSE(streamTime(kAllOnes));
  EXPECT_EQ("undefined", durationDigits(0xFFFFFF));
  EXPECT_FALSE(durationSeconds(0xFFFFFF));
}

TEST(DvbTime, HasDurationsOfUpToAHundredHours) {
  EXPECT_EQ(0, durationSeconds(0));
  EXPECT_EQ(45 * kMinute, durationSeconds(0x004500));
  EXPECT_EQ("00:45:00", durationDigits(0x004500));
  EXPECT_EQ(29 * kHour, durationSeconds(0x290000));
  EXPECT_EQ(99 * kHour + 59 * kMinute + 59, durationSeconds(0x995959));
  EXPECT_FALSE(durationSeconds(0x006000));
  EXPECT_EQ("00:60:00", durationDigits(0x006000));
}

TEST(DvbTime, WritesAsManyPairsOfDigitsAsAreAskedFor) {
  EXPECT_EQ("06:30", codedDigits(0x0630, 2));
  EXPECT_EQ("45:00", codedDigits(0x124500, 2));
}

TEST(DvbTime, SaysDurationsInWords) {
  EXPECT_EQ("0 s", durationText(0));
  EXPECT_EQ("45 min", durationText(45 * kMinute));
  EXPECT_EQ("1 h 30 min", durationText(90 * kMinute));
  EXPECT_EQ("2 h 20 s", durationText(2 * kHour + 20));
}

TEST(DvbTime, WritesSpans) {
  EXPECT_EQ("+00:00:00", spanText(0));
  EXPECT_EQ("-00:00:05", spanText(-5));
  EXPECT_EQ("+1 d 02:03:04", spanText(kDay + 2 * kHour + 3 * kMinute + 4));
}

}  // namespace
}  // namespace tevra::tools
