#include "tools/report/facts/event_list.h"

#include <gtest/gtest.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools::report {
namespace {

EITEvent eventAt(int id, int64_t clock, const std::string& name, int duration = 0x003000) {
  EITEvent event = test::eventRecord(id, test::timeAt(clock), name);
  event.duration = duration;
  return event;
}

EIT eit(int tableId, const std::vector<EITEvent>& events) {
  EIT record;
  record.tableId = tableId;
  record.events = events;
  return record;
}

TEST(EventList, HasNoneOfNoTables) {
  const EventList list = eventList({}, std::nullopt);
  EXPECT_TRUE(list.events.empty());
  EXPECT_EQ(0U, list.timeless);
}

TEST(EventList, JoinsPresentFollowingWithTheScheduleByTime) {
  const auto news = eventAt(2, 0x130000, "News");
  const EventList list = eventList({eit(0x4E, {eventAt(1, 0x120000, "Film"), news}),
                                    eit(0x50, {eventAt(3, 0x140000, "Late"), news})},
                                   std::nullopt);
  ASSERT_EQ(3U, list.events.size());
  EXPECT_EQ("Film", list.events[0].name);
  EXPECT_TRUE(list.events[0].isPresent);
  EXPECT_FALSE(list.events[0].isScheduled);
  EXPECT_EQ("News", list.events[1].name);
  EXPECT_TRUE(list.events[1].isFollowing);
  EXPECT_TRUE(list.events[1].isScheduled);
  EXPECT_FALSE(list.events[2].isFollowing);
  EXPECT_EQ(30 * kMinute, list.events[2].duration);
}

TEST(EventList, TakesALoneEventThatStartsLaterForTheFollowing) {
  const StreamTime noon = streamTime(test::timeAt(0x120000)).value();
  const auto later = eventList({eit(0x4E, {eventAt(1, 0x130000, "Film")})}, noon);
  EXPECT_TRUE(later.events.at(0).isFollowing);
  const auto now = eventList({eit(0x4E, {eventAt(1, 0x113000, "Film")})}, noon);
  EXPECT_TRUE(now.events.at(0).isPresent);
  const auto unknown = eventList({eit(0x4E, {eventAt(1, 0x130000, "Film")})}, std::nullopt);
  EXPECT_TRUE(unknown.events.at(0).isPresent);
}

TEST(EventList, CountsEventsWithoutATime) {
  EITEvent reference = eventAt(1, 0, "NVOD");
  reference.startTime = 0xFFFFFFFFFF;
  const EventList list = eventList(
      {eit(0x50, {reference, eventAt(2, 0x120000, "Odd", 0xFFFFFF), eventAt(3, 0x120000, "")})},
      std::nullopt);
  EXPECT_EQ(2U, list.timeless);
  ASSERT_EQ(1U, list.events.size());
  EXPECT_EQ("", list.events[0].name);
}

}  // namespace
}  // namespace tevra::tools::report
