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
  void referToPmt(int pid) { intervals_.refer({{pid}, {}, {}}); }

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

}  // namespace
}  // namespace tevra::tools::report
