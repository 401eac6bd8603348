#include "tools/outputs/table_repetition.h"

#include <gtest/gtest.h>

#include <string>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {
namespace {

constexpr int64_t kMillisecond = kSystemClock / 1000;

/** "PAT+PMT", "SDT", both or nothing. */
std::string due(TableRepetition& tables, int64_t time, int64_t horizon) {
  const TableRepetition::Due due = tables.before(time * kMillisecond, horizon * kMillisecond);
  return std::string(due.patAndPmt ? "PAT+PMT" : "") + (due.sdt ? "SDT" : "");
}
std::string due(TableRepetition& tables, int64_t time) {
  return due(tables, time, time);
}

TEST(TableRepetition, HasAllTablesFirstOfAllAndAfterARestart) {
  TableRepetition tables;
  EXPECT_EQ("PAT+PMTSDT", due(tables, 5));
  EXPECT_EQ("", due(tables, 5));
  tables.restart();
  EXPECT_EQ("PAT+PMTSDT", due(tables, 5));
}

TEST(TableRepetition, LeavesRoomForWhatAReceiverTakesThemEarlier) {
  TableRepetition tables;
  (void)due(tables, 0);
  EXPECT_EQ("", due(tables, 59));
  EXPECT_EQ("PAT+PMT", due(tables, 60));
  EXPECT_EQ("", due(tables, 119));
  EXPECT_EQ("PAT+PMT", due(tables, 899));
  EXPECT_EQ("SDT", due(tables, 900));
}

TEST(TableRepetition, PrefersToStandBeforeAPacketWithAPcr) {
  TableRepetition tables;
  (void)due(tables, 0);
  EXPECT_EQ("", due(tables, 19, 59));
  EXPECT_EQ("PAT+PMT", due(tables, 20, 60));
  EXPECT_EQ("", due(tables, 79)) << "counts from when they went out";
  EXPECT_EQ("PAT+PMTSDT", due(tables, 870, 910));
}

}  // namespace
}  // namespace tevra::tools
