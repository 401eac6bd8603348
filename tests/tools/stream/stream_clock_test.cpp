#include "tools/stream/stream_clock.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::PacketWriter;

constexpr int kPcrPid = 100;
constexpr int kOtherPid = 200;
constexpr int64_t kMillisecond = kSystemClock / 1000;

class StreamClockTest : public testing::Test {
 protected:
  void push(int packets) {
    for (int i = 0; i < packets; ++i) {
      clock_.push(writer_.stream(kOtherPid, 0));
    }
  }
  void pushPcr(int64_t pcr, bool discontinuity = false) {
    TsPacket packet = writer_.stream(kPcrPid, 0, pcr);
    if (discontinuity) {
      packet.data()[5] |= 0x80;
    }
    clock_.push(packet);
  }

  PacketWriter writer_;
  std::vector<int64_t> times_;
  std::vector<int64_t> horizons_;
  StreamClock clock_{kPcrPid, [this](const TsPacket&, int64_t time, int64_t horizon) {
                       times_.push_back(time);
                       horizons_.push_back(horizon);
                     }};
};

TEST_F(StreamClockTest, SpreadsPacketsEvenlyBetweenPcrs) {
  pushPcr(5000);
  push(3);
  pushPcr(5000 + 400);
  push(1);
  pushPcr(5000 + 400 + 1000);
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200, 300, 400, 900}), times_);
}

TEST_F(StreamClockTest, IsMeasuredFromTheSecondPcrOn) {
  push(3);
  pushPcr(5000);
  clock_.finish();
  EXPECT_FALSE(clock_.isMeasured());
  pushPcr(5000);
  pushPcr(5400);
  EXPECT_TRUE(clock_.isMeasured());
}

TEST_F(StreamClockTest, TellsThePacketWithAPcrWhenTheNextOneComes) {
  pushPcr(5000);
  push(1);
  pushPcr(5000 + 400);
  push(1);
  pushPcr(5000 + 400 + 1000);
  EXPECT_EQ((std::vector<int64_t>{400, 200, 1400, 900}), horizons_);
}

TEST_F(StreamClockTest, CountsTheTimeBeforeTheFirstPcrAtTheFirstRate) {
  push(2);
  pushPcr(0);
  push(1);
  EXPECT_TRUE(times_.empty()) << "the rate is not known yet";
  pushPcr(200);
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200, 300}), times_);
}

TEST_F(StreamClockTest, CountsTheTimeBehindTheLastPcrAtTheLastRate) {
  pushPcr(0);
  pushPcr(100);
  push(2);
  clock_.finish();
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200, 300}), times_);
}

TEST_F(StreamClockTest, SeesThroughTheWrapOfThePcr) {
  pushPcr(kPcrModulus - 100);
  pushPcr(100);
  pushPcr(300);
  EXPECT_EQ((std::vector<int64_t>{0, 200}), times_);
}

TEST_F(StreamClockTest, KeepsTheRateWhereTheClockJumps) {
  pushPcr(1000);
  pushPcr(1100);
  pushPcr(50);  // back
  pushPcr(150);
  pushPcr(150 + 10 * kSystemClock);  // far ahead
  pushPcr(250 + 10 * kSystemClock);
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200, 300, 400}), times_);
}

TEST_F(StreamClockTest, KeepsTheRateAtADiscontinuity) {
  pushPcr(1000);
  pushPcr(1100);
  pushPcr(1900, /*discontinuity=*/true);
  pushPcr(2000);
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200}), times_);
}

TEST_F(StreamClockTest, IgnoresThePcrsOfOtherPids) {
  pushPcr(1000);
  clock_.push(writer_.stream(kOtherPid, 0, 7777));
  pushPcr(1200);
  EXPECT_EQ((std::vector<int64_t>{0, 100}), times_);
}

TEST_F(StreamClockTest, FollowsAnotherPidWithoutAJumpOfTime) {
  pushPcr(0);
  push(1);
  pushPcr(200);
  clock_.follow(kOtherPid);
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200}), times_) << "what waited for the former";
  clock_.push(writer_.stream(kOtherPid, 0, 7000));
  pushPcr(400);
  clock_.push(writer_.stream(kOtherPid, 0, 7100));
  EXPECT_EQ((std::vector<int64_t>{0, 100, 200, 300, 350}), times_);
}

TEST_F(StreamClockTest, AssumesOneMegabitPerSecondWithoutPcrs) {
  push(3);
  clock_.finish();
  EXPECT_EQ((std::vector<int64_t>{0, 40608, 81216}), times_) << "1504 us each";
}

TEST_F(StreamClockTest, HoldsBackNoMorePacketsThanItSays) {
  push(static_cast<int>(StreamClock::kMaxPending) - 1);
  EXPECT_TRUE(times_.empty());
  push(1);
  EXPECT_EQ(StreamClock::kMaxPending, times_.size());
  pushPcr(1000);
  pushPcr(1000 + 5 * kMillisecond);
  push(1);
  clock_.finish();
  ASSERT_EQ(StreamClock::kMaxPending + 3, times_.size());
  EXPECT_EQ(5 * kMillisecond, times_[times_.size() - 2] - times_[times_.size() - 3]);
  EXPECT_TRUE(std::is_sorted(times_.begin(), times_.end()));
}

TEST_F(StreamClockTest, HandsOnNothingOfAnEmptyStream) {
  clock_.finish();
  EXPECT_TRUE(times_.empty());
}

}  // namespace
}  // namespace tevra::tools
