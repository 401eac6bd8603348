#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"
#include "tools/changes/change_text.h"
#include "tools/changes/table_changes.h"

namespace tevra::tools {
namespace {

using test::eitRecord;
using test::eventRecord;
using test::timeAt;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int64_t kUndefinedTime = 0xFFFFFFFFFF;

std::vector<std::string> lines(const EIT& from, const EIT& to) {
  std::vector<std::string> texts;
  for (const ChangeLine& line : changeLines(tableChanges(from, to))) {
    texts.push_back(std::string(1, line.sign) + " " + line.text);
  }
  return texts;
}

/** Events 1, 2 and so on, at these times of the day. */
EIT scheduleAt(const std::vector<int64_t>& clocks) {
  std::vector<EITEvent> events;
  for (const int64_t clock : clocks) {
    const int id = static_cast<int>(events.size()) + 1;
    events.push_back(eventRecord(id, timeAt(clock), "Show " + std::to_string(id)));
  }
  return eitRecord(events);
}

TEST(EventChanges, EventsThatMoveEquallyAreOneLine) {
  EXPECT_THAT(
      lines(scheduleAt({0x120000, 0x123000, 0x130000}), scheduleAt({0x120005, 0x123005, 0x130005})),
      ElementsAre("~ all 3 events moved by +00:00:05"));
}

TEST(EventChanges, EventsThatMoveEquallyKeepTheirIds) {
  const Changes changes =
      tableChanges(scheduleAt({0x120000, 0x123000}), scheduleAt({0x115500, 0x122500}));
  ASSERT_THAT(changes, SizeIs(1));
  EXPECT_EQ(-300, changes[0].seconds);
  EXPECT_TRUE(changes[0].isOfAll);
  EXPECT_THAT(changes[0].subject.ids, SizeIs(2));
  EXPECT_EQ("1993-10-13 12:00:00 UTC",
            std::get<Time>(std::get<Field>(changes[0].from).value).shown);
  EXPECT_EQ("1993-10-13 11:55:00 UTC", std::get<Time>(std::get<Field>(changes[0].to).value).shown);
}

TEST(EventChanges, EventsThatMoveDifferentlyAreALineForEachDistance) {
  EXPECT_THAT(lines(scheduleAt({0x120000, 0x123000, 0x130000, 0x133000, 0x140000}),
                    scheduleAt({0x120100, 0x123100, 0x130200, 0x133200, 0x150000})),
              ElementsAre("~ 2 events moved by +00:01:00", "~ 2 events moved by +00:02:00",
                          "~ event 5 \"Show 5\": start time 1993-10-13 14:00:00 UTC -> "
                          "1993-10-13 15:00:00 UTC (+01:00:00)"));
}

TEST(EventChanges, WhatElseChangedAboutAnEventThatMovedStandsBelow) {
  EIT after = scheduleAt({0x120005, 0x123005});
  after.events[1].duration = 0x010000;
  EXPECT_THAT(lines(scheduleAt({0x120000, 0x123000}), after),
              ElementsAre("~ all 2 events moved by +00:00:05",
                          "~ event 2 \"Show 2\": duration 00:30:00 -> 01:00:00"));
}

TEST(EventChanges, EventsThatComeAndGoSayWhenTheyAre) {
  EXPECT_THAT(lines(eitRecord({eventRecord(1, timeAt(0x120000), "Old")}),
                    eitRecord({eventRecord(2, timeAt(0x123000), "New")})),
              ElementsAre("- event 1 \"Old\": 1993-10-13 12:00:00 UTC, 00:30:00",
                          "+ event 2 \"New\": 1993-10-13 12:30:00 UTC, 00:30:00"));
}

TEST(EventChanges, ANewNameIsAChangeOfTheEvent) {
  EXPECT_THAT(lines(eitRecord({eventRecord(1, timeAt(0x120000), "News")}),
                    eitRecord({eventRecord(1, timeAt(0x120000), "Football")})),
              ElementsAre("~ event 1 \"News\": event name \"News\" -> \"Football\""));
}

TEST(EventChanges, ATimeThatIsNoneIsNoDistance) {
  const EIT before =
      eitRecord({eventRecord(1, kUndefinedTime, "A"), eventRecord(2, kUndefinedTime, "B")});
  const Changes changes = tableChanges(before, scheduleAt({0x120000, 0x123000}));
  for (const Change& change : changes) {
    EXPECT_FALSE(change.seconds) << change.subject.label;
  }
  EXPECT_THAT(lines(eitRecord({eventRecord(1, kUndefinedTime, "A")}),
                    eitRecord({eventRecord(1, timeAt(0x120000), "A")})),
              ElementsAre("~ event 1 \"A\": start time undefined -> 1993-10-13 12:00:00 UTC"));
}

TEST(EventChanges, EventsWithOneIdAreComparedInTheirOrder) {
  EXPECT_THAT(lines(eitRecord({eventRecord(1, timeAt(0x120000), "A"),
                               eventRecord(1, timeAt(0x130000), "B")}),
                    eitRecord({eventRecord(1, timeAt(0x120000), "A"),
                               eventRecord(1, timeAt(0x140000), "B")})),
              ElementsAre("~ event 1 \"B\": start time 1993-10-13 13:00:00 UTC -> "
                          "1993-10-13 14:00:00 UTC (+01:00:00)"));
}

TEST(EventChanges, AnEmptyScheduleHasNone) {
  EXPECT_THAT(lines(eitRecord({}), eitRecord({})), IsEmpty());
}

}  // namespace
}  // namespace tevra::tools
