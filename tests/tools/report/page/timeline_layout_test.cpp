#include "tools/report/page/timeline_layout.h"

#include <algorithm>

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

/** Every event has its blocks, none meet, and all lie within their rows, which fit on a page. */
void expectSound(const std::vector<TimelineRow>& rows, size_t events) {
  std::vector<int> seen(events);
  for (const TimelineRow& row : rows) {
    EXPECT_LE(row.height, 400);
    for (size_t place = 0; place < row.blocks.size(); ++place) {
      const Box& box = row.blocks[place].box;
      ++seen[row.blocks[place].event];
      EXPECT_GE(box.x, kRowLabelWidth);
      EXPECT_LE(box.right(), kPictureWidth);
      EXPECT_GE(box.y, kHoursHeight);
      EXPECT_LE(box.bottom(), row.height);
      EXPECT_GT(box.width, 0);
      for (size_t other = place + 1; other < row.blocks.size(); ++other) {
        EXPECT_FALSE(meet(box, row.blocks[other].box));
      }
    }
  }
  EXPECT_THAT(seen, testing::Each(testing::Ge(1)));
}

/** The rows for the events, which are sound. */
std::vector<TimelineRow> soundRows(const std::vector<Event>& events,
                                   std::optional<StreamTime> clock = std::nullopt) {
  std::vector<TimelineRow> rows = layoutTimeline(events, clock);
  expectSound(rows, events.size());
  return rows;
}

TEST(TimelineLayout, HasNoRowWithoutEvents) {
  EXPECT_TRUE(layoutTimeline({}, kNoon).empty());
}

TEST(TimelineLayout, ShowsOneEventInOneShortRow) {
  const auto rows = soundRows(eventsOf(1, 30));
  ASSERT_EQ(1U, rows.size());
  EXPECT_EQ(3 * kHour, rowSeconds(rows[0]));
  EXPECT_EQ(kNoon, rows[0].start);
  EXPECT_FALSE(rows[0].clock.has_value());
}

TEST(TimelineLayout, MakesRowsAsLongAsEventsAllow) {
  const std::vector<std::pair<int64_t, int64_t>> spans = {
      {150, 24}, {75, 12}, {45, 6}, {15, 3}, {1, 3}};  // minutes of an event, hours of a row
  for (const auto& [minutes, hours] : spans) {
    const auto events = eventsOf(static_cast<size_t>(3 * 24 * 60 / minutes), minutes);
    EXPECT_EQ(hours * kHour, rowSeconds(soundRows(events, kNoon).at(0))) << minutes;
  }
}

TEST(TimelineLayout, ShowsAWeekOfEventsInRowsOneAfterTheOther) {
  const auto rows = soundRows(eventsOf(size_t{7} * 48, 30), kNoon);
  ASSERT_EQ(56U, rows.size());
  for (size_t place = 0; place < rows.size(); ++place) {
    EXPECT_EQ(kNoon + static_cast<int64_t>(place) * 3 * kHour, rows[place].start);
  }
}

TEST(TimelineLayout, CarriesAnEventOverTheEndOfARow) {
  auto events = eventsOf(1, 90);
  events[0].start += 11 * kHour;  // 23:00 to 00:30
  const auto rows = soundRows(events);
  ASSERT_EQ(2U, rows.size());
  const EventBlock& first = rows[0].blocks.at(0);
  const EventBlock& second = rows[1].blocks.at(0);
  EXPECT_TRUE(first.goesOn && !first.began);
  EXPECT_TRUE(second.began && !second.goesOn);
}

TEST(TimelineLayout, LeavesOutHoursWithoutEvents) {
  auto events = eventsOf(2, 60);
  events[1].start += 30 * kDay;
  EXPECT_EQ(2U, soundRows(events).size());
}

TEST(TimelineLayout, PutsEventsOfTheSameTimeBelowEachOtherAndCountsWhatHasNoRoom) {
  for (const size_t count : {5U, 12U, 50'000U}) {
    auto events = eventsOf(count, 30);
    for (Event& event : events) {
      event.start = kNoon;
    }
    const auto rows = layoutTimeline(events, std::nullopt);
    const size_t shown = std::min<size_t>(count, 12);
    ASSERT_EQ(shown, rows.at(0).blocks.size());
    EXPECT_EQ(count - shown, rows[0].crowdedOut);
    expectSound(rows, shown);
  }
}

TEST(TimelineLayout, ShowsEventsWithoutDuration) {
  soundRows(eventsOf(1, 0));
}

TEST(TimelineLayout, MarksTheClockInItsRow) {
  const auto rows = layoutTimeline(eventsOf(1, 60), kNoon + 90 * kMinute);
  ASSERT_TRUE(rows.at(0).clock.has_value());
  EXPECT_NEAR((kRowLabelWidth + kPictureWidth) / 2, *rows[0].clock, 3) << "half of three hours";
  EXPECT_FALSE(layoutTimeline(eventsOf(1, 60), kNoon - 1).at(0).clock.has_value());
}

}  // namespace
}  // namespace tevra::tools::report
