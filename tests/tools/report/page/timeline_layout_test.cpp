#include "tools/report/page/timeline_layout.h"

#include <gmock/gmock.h>

#include "tests/tools/report/report_samples.h"

namespace tevra::tools::report {
namespace {

using test::eventsOf;
using test::kNoon;

int64_t rowSeconds(const TimelineRow& row) {
  const HourMark& first = row.hours.front();
  const HourMark& last = row.hours.back();
  const int64_t step = row.hours.at(1).time - first.time;
  return last.time - first.time + step;
}

bool meet(const Box& a, const Box& b) {
  return a.x < b.right() && b.x < a.right() && a.y < b.bottom() && b.y < a.bottom();
}

/** Every event has its blocks, none meet, and all lie within their rows and sheets. */
void expectSound(const std::vector<TimelineSheet>& sheets, size_t events) {
  std::vector<int> seen(events);
  for (const TimelineSheet& sheet : sheets) {
    double y = 0;
    for (const TimelineRow& row : sheet.rows) {
      EXPECT_EQ(y, row.box.y);
      y = row.box.bottom();
      for (size_t place = 0; place < row.blocks.size(); ++place) {
        const Box& box = row.blocks[place].box;
        ++seen[row.blocks[place].event];
        EXPECT_GE(box.x, kRowLabelWidth);
        EXPECT_LE(box.right(), kPictureWidth);
        EXPECT_GE(box.y, row.box.y + kHoursHeight);
        EXPECT_LE(box.bottom(), row.box.bottom());
        EXPECT_GT(box.width, 0);
        for (size_t other = place + 1; other < row.blocks.size(); ++other) {
          EXPECT_FALSE(meet(box, row.blocks[other].box));
        }
      }
    }
    EXPECT_EQ(y, sheet.height);
  }
  EXPECT_THAT(seen, testing::Each(testing::Ge(1)));
}

TEST(TimelineLayout, HasNoSheetWithoutEvents) {
  EXPECT_TRUE(layoutTimeline({}, kNoon).empty());
}

TEST(TimelineLayout, ShowsOneEventInOneShortRow) {
  const auto sheets = layoutTimeline(eventsOf(1, 30), std::nullopt);
  expectSound(sheets, 1);
  ASSERT_EQ(1U, sheets.size());
  ASSERT_EQ(1U, sheets[0].rows.size());
  EXPECT_EQ(3 * kHour, rowSeconds(sheets[0].rows[0]));
  EXPECT_EQ(kNoon, sheets[0].rows[0].start);
  EXPECT_FALSE(sheets[0].rows[0].clock.has_value());
}

TEST(TimelineLayout, MakesRowsAsLongAsEventsAllow) {
  const std::vector<std::pair<int64_t, int64_t>> spans = {
      {150, 24}, {75, 12}, {45, 6}, {15, 3}, {1, 3}};  // minutes of an event, hours of a row
  for (const auto& [minutes, hours] : spans) {
    const auto events = eventsOf(static_cast<size_t>(3 * 24 * 60 / minutes), minutes);
    const auto sheets = layoutTimeline(events, kNoon);
    expectSound(sheets, events.size());
    EXPECT_EQ(hours * kHour, rowSeconds(sheets.at(0).rows.at(0))) << minutes;
  }
}

TEST(TimelineLayout, CutsAWeekOfEventsIntoSheetsOfAPage) {
  const auto events = eventsOf(size_t{7} * 48, 30);
  const auto sheets = layoutTimeline(events, kNoon);
  expectSound(sheets, events.size());
  EXPECT_GT(sheets.size(), 1U);
  for (const TimelineSheet& sheet : sheets) {
    EXPECT_LE(sheet.height, 1250);
  }
}

TEST(TimelineLayout, CarriesAnEventOverTheEndOfARow) {
  auto events = eventsOf(1, 90);
  events[0].start += 11 * kHour;  // 23:00 to 00:30
  const auto sheets = layoutTimeline(events, std::nullopt);
  expectSound(sheets, 1);
  ASSERT_EQ(2U, sheets.at(0).rows.size());
  const EventBlock& first = sheets[0].rows[0].blocks.at(0);
  const EventBlock& second = sheets[0].rows[1].blocks.at(0);
  EXPECT_TRUE(first.goesOn && !first.began);
  EXPECT_TRUE(second.began && !second.goesOn);
}

TEST(TimelineLayout, LeavesOutHoursWithoutEvents) {
  auto events = eventsOf(2, 60);
  events[1].start += 30 * kDay;
  const auto sheets = layoutTimeline(events, std::nullopt);
  expectSound(sheets, 2);
  EXPECT_EQ(2U, sheets.at(0).rows.size());
}

TEST(TimelineLayout, PutsEventsOfTheSameTimeBelowEachOther) {
  auto events = eventsOf(5, 30);
  for (Event& event : events) {
    event.start = kNoon;
  }
  const auto sheets = layoutTimeline(events, std::nullopt);
  expectSound(sheets, 5);
}

TEST(TimelineLayout, CountsWhatHasNoRoomBelowEachOther) {
  auto events = eventsOf(50'000, 30);
  for (Event& event : events) {
    event.start = kNoon;
  }
  const auto sheets = layoutTimeline(events, std::nullopt);
  const TimelineRow& row = sheets.at(0).rows.at(0);
  EXPECT_EQ(12U, row.blocks.size());
  EXPECT_EQ(50'000U - 12, row.crowdedOut);
}

TEST(TimelineLayout, ShowsEventsWithoutDuration) {
  auto events = eventsOf(1, 0);
  expectSound(layoutTimeline(events, std::nullopt), 1);
}

TEST(TimelineLayout, MarksTheClockInItsRow) {
  const auto sheets = layoutTimeline(eventsOf(1, 60), kNoon + 90 * kMinute);
  const TimelineRow& row = sheets.at(0).rows.at(0);
  ASSERT_TRUE(row.clock.has_value());
  EXPECT_NEAR((kRowLabelWidth + kPictureWidth) / 2, *row.clock, 3) << "half of three hours";
  const auto before = layoutTimeline(eventsOf(1, 60), kNoon - 1);
  EXPECT_FALSE(before.at(0).rows.at(0).clock.has_value());
}

}  // namespace
}  // namespace tevra::tools::report
