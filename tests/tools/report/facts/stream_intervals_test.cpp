#include "tools/report/facts/stream_intervals.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::report {
namespace {

constexpr int kClockPid = 0x100;

class StreamIntervalsTest : public testing::Test {
 protected:
  /** A packet with a PCR every 20 ms. */
  void push(int packets) {
    for (int i = 0; i < packets; ++i) {
      intervals_.push(writer_.stream(kClockPid, 0, slot_++ * kSystemClock / 50));
    }
  }
  /** One of another PID; nothing comes between it and the one before. */
  void push(int pid, int64_t pcr) { intervals_.push(writer_.stream(pid, 0, pcr)); }
  void referToPmt(int pid) { intervals_.refer({{pid}, {}, {}}); }
  void referToClocks(const std::set<int>& pids) { intervals_.refer({{}, pids, {}}); }

  test::PacketWriter writer_;
  int64_t slot_ = 0;
  StreamIntervals intervals_{kPidPeriod};
};

TEST_F(StreamIntervalsTest, WaitFromThePacketThatRefersToAPid) {
  push(10);
  referToPmt(0x20);
  push(20);
  referToPmt(0x30);
  push(5);
  intervals_.finish();
  EXPECT_EQ(20 * kSystemClock / 50, intervals_.of(0x20)->tables.longestWait());
  EXPECT_EQ(5 * kSystemClock / 50, intervals_.of(0x30)->tables.longestWait());
  EXPECT_EQ(34 * kSystemClock / 50, intervals_.span());
}

TEST_F(StreamIntervalsTest, HoldNoMoreChangesBackThanAStreamCanMean) {
  intervals_.push(writer_.stream(0x200, 0));
  for (int pid = 0; pid < 5000; ++pid) {
    referToPmt(pid);
  }
  push(3);
  intervals_.finish();
  EXPECT_NE(nullptr, intervals_.of(4999)) << "the last one counts";
  EXPECT_EQ(nullptr, intervals_.of(4000));
}

TEST_F(StreamIntervalsTest, RepeatAnOutputsTablesByThePcrsThatItCarries) {
  push(2);
  referToClocks({kClockPid});
  push(500);
  intervals_.finish();
  const RepeatedTables* tables = intervals_.repeated(kClockPid);
  ASSERT_NE(nullptr, tables);
  EXPECT_EQ(kSystemClock * 40 / 1000, tables->patAndPmt.shortest()) << "the last PCR before 60 ms";
  EXPECT_EQ(kSystemClock * 40 / 1000, tables->patAndPmt.longest());
  EXPECT_EQ(249U, tables->patAndPmt.intervals());
  EXPECT_EQ(kSystemClock * 880 / 1000, tables->sdt.shortest());
  EXPECT_EQ(kSystemClock * 880 / 1000, tables->sdt.longest());
  EXPECT_EQ(11U, tables->sdt.intervals());
}

TEST_F(StreamIntervalsTest, MeasureRepeatedTablesByTheStreamsClockWhateverTheirOwnSays) {
  push(2);
  referToClocks({0x200});
  for (int i = 0; i < 500; ++i) {
    push(0x200, i * kSystemClock / 25);  // 40 ms where the stream has 20
    push(1);
  }
  intervals_.finish();
  const RepeatedTables* tables = intervals_.repeated(0x200);
  ASSERT_NE(nullptr, tables);
  EXPECT_NEAR(0.020, ticksToSeconds(tables->patAndPmt.longest()), 1e-3);
}

TEST_F(StreamIntervalsTest, RepeatNoTablesByAPidWithoutPcrsOrThatNoPmtNamesForThem) {
  push(2);
  referToClocks({0x200, 0x300});
  push(0x200, 0);
  intervals_.push(writer_.stream(0x300, 0));
  push(10'000);
  intervals_.finish();
  EXPECT_EQ(nullptr, intervals_.repeated(0x200)) << "one PCR tells no rate";
  EXPECT_EQ(nullptr, intervals_.repeated(0x300));
  EXPECT_EQ(nullptr, intervals_.repeated(kClockPid));
}

TEST_F(StreamIntervalsTest, RepeatTablesForNoMoreClocksThanAMultiplexHasRoomFor) {
  constexpr int kFirst = 0x200;
  constexpr int kLast = kFirst + static_cast<int>(StreamIntervals::kMostClocks);
  std::set<int> clocks;
  for (int pid = kFirst; pid <= kLast; ++pid) {
    clocks.insert(pid);
  }
  push(2);
  referToClocks(clocks);
  push(1);
  for (int round = 0; round < 2; ++round) {
    for (const int pid : clocks) {
      push(pid, round * kSystemClock / 50);
    }
  }
  intervals_.finish();
  EXPECT_NE(nullptr, intervals_.repeated(kLast - 1));
  EXPECT_EQ(nullptr, intervals_.repeated(kLast));
}

}  // namespace
}  // namespace tevra::tools::report
