#include "tools/stream/running_clock.h"

#include <algorithm>
#include <random>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

constexpr int kPcrPid = 100;
constexpr int kOtherPid = 200;
constexpr int64_t kMillisecond = kSystemClock / 1000;
constexpr int64_t kAssumed = 40608;  // ticks of a packet at 1 Mbit/s

class RunningClockTest : public testing::Test {
 protected:
  RunningClock::Moment note(const TsPacket& packet) {
    const RunningClock::Moment moment = clock_.at(packet);
    times_.push_back(moment.time);
    return moment;
  }
  void push(int packets) {
    for (int i = 0; i < packets; ++i) {
      (void)note(writer_.stream(kOtherPid, 0));
    }
  }
  /** How far on the next one is expected. */
  int64_t pushPcr(int64_t milliseconds, int pid = kPcrPid) {
    const int64_t pcr = (milliseconds * kMillisecond + kPcrModulus) % kPcrModulus;
    const RunningClock::Moment moment = note(writer_.stream(pid, 0, pcr));
    return moment.horizon - moment.time;
  }
  /** A PCR every `interval` with nine packets behind it. */
  void pushSteady(int intervals, int64_t interval = 40) {
    for (int i = 0; i < intervals; ++i) {
      (void)pushPcr(pcr_ += interval);
      push(9);
    }
  }

  test::PacketWriter writer_;
  int64_t pcr_ = 0;  // of the last steady one
  std::vector<int64_t> times_;
  RunningClock clock_;
};

TEST_F(RunningClockTest, GoesOnOverAPcrThatStandsStill) {
  pushSteady(3);
  for (int i = 0; i < 20'000; ++i) {
    (void)pushPcr(pcr_);
  }
  EXPECT_GT(times_.back(), 10'000 * kMillisecond);
}

TEST_F(RunningClockTest, GoesOnByPacketsAtTheRateOfTheLastInterval) {
  pushPcr(1000);
  push(1);
  EXPECT_FALSE(clock_.isMeasured());
  pushPcr(1020);
  EXPECT_TRUE(clock_.isMeasured());
  push(2);
  pushPcr(1050);
  push(1);
  EXPECT_EQ((std::vector<int64_t>{0, kAssumed, 20 * kMillisecond, 30 * kMillisecond,
                                  40 * kMillisecond, 50 * kMillisecond, 60 * kMillisecond}),
            times_);
}

TEST_F(RunningClockTest, GoesByTheFirstPidThatHasPcrsUnlessItIsTold) {
  EXPECT_EQ(std::nullopt, clock_.pcrPid());
  push(1);
  pushPcr(0);
  pushPcr(500, kOtherPid);
  EXPECT_FALSE(clock_.isMeasured());
  EXPECT_EQ(kPcrPid, clock_.pcrPid());
  RunningClock told(kOtherPid);
  (void)told.at(writer_.stream(kPcrPid, 0, 0));
  EXPECT_EQ(kOtherPid, told.pcrPid());
}

TEST_F(RunningClockTest, ExpectsTheNextPcrAfterTheLongestIntervalOfLate) {
  EXPECT_EQ(0, pushPcr(0));
  EXPECT_EQ(40 * kMillisecond, pushPcr(40));
  const int64_t soon = pushPcr(50);
  EXPECT_GT(soon, 39 * kMillisecond);
  EXPECT_LE(soon, 40 * kMillisecond);
  int64_t later = 0;
  for (int64_t pcr = 60; pcr < 2060; pcr += 10) {
    later = pushPcr(pcr);
  }
  EXPECT_EQ(10 * kMillisecond, later);
  const RunningClock::Moment other = note(writer_.stream(kPcrPid, 0));
  EXPECT_EQ(other.time, other.horizon) << "has no PCR";
}

TEST_F(RunningClockTest, StandsStillWhereAPcrIsLateButNotWhereNoneComes) {
  pushSteady(3);
  const int64_t last = times_.back() + 4 * kMillisecond;
  push(4096);
  EXPECT_EQ(last, times_.back());
  push(10);
  EXPECT_EQ(last + 36 * kMillisecond, times_.back());
}

TEST_F(RunningClockTest, IsRightAgainAtThePcrBehindManyPackets) {
  pushSteady(3);
  push(90);
  const int64_t before = times_.back();
  pushSteady(1);
  EXPECT_EQ(before, times_.at(times_.size() - 10));
  pushSteady(1);
  EXPECT_EQ(before + 40 * kMillisecond, times_.at(times_.size() - 10));
}

TEST_F(RunningClockTest, GoesOnFromThePacketBeforeWhereTheClockJumps) {
  pushSteady(3);
  for (const int64_t jump : {-1000, 5001}) {
    const int64_t before = times_.back();
    pcr_ += jump - 40;
    pushSteady(1);
    EXPECT_EQ(before, times_.at(times_.size() - 10)) << jump;
    EXPECT_EQ(before + 36 * kMillisecond, times_.back()) << "at the same rate";
  }
  const int64_t before = times_.back();
  TsPacket announced = writer_.stream(kPcrPid, 0, (pcr_ + 400) * kMillisecond);
  announced.data()[5] |= 0x80;  // discontinuity_indicator
  EXPECT_EQ(before, note(announced).time);
  pushPcr(pcr_ + 410);
  EXPECT_EQ(before + 10 * kMillisecond, times_.back());
}

TEST_F(RunningClockTest, CountsOnOverTheEndOfTheClock) {
  pcr_ = -60;
  pushSteady(3);
  EXPECT_EQ((80 + 36) * kMillisecond, times_.back());
}

TEST_F(RunningClockTest, CountsAGapButTakesNoRateFromIt) {
  pushSteady(3);
  const int64_t before = times_.back();
  pushSteady(1, 3000);
  EXPECT_EQ(before + 3000 * kMillisecond, times_.back());
  pushSteady(2, 3000);
  EXPECT_EQ(2700 * kMillisecond, times_.back() - times_.at(times_.size() - 10))
      << "twice in a row it is the rate";
}

TEST_F(RunningClockTest, AssumesOneMegabitPerSecondWithoutPcrs) {
  push(4096 + 28);
  EXPECT_EQ(0, times_[0]);
  EXPECT_EQ(kAssumed, times_[1]);
  EXPECT_EQ(40 * kMillisecond, times_[4096]) << "waits for a PCR, but not for ever";
  EXPECT_EQ(27 * kAssumed, times_.back());
}

TEST_F(RunningClockTest, FollowsAnotherPidWithoutAJump) {
  pushSteady(3);
  const int64_t before = times_.back();
  clock_.follow(kOtherPid);
  push(2);
  pushPcr(77'000, kOtherPid);
  push(1);
  pushPcr(77'020, kOtherPid);
  std::vector<int64_t> since;
  for (auto time = times_.end() - 5; time != times_.end(); ++time) {
    since.push_back((*time - before) / kMillisecond);
  }
  EXPECT_EQ((std::vector<int64_t>{0, 4, 4, 8, 24}), since);
  EXPECT_TRUE(clock_.isMeasured());
  clock_.follow(kOtherPid);
  pushPcr(77'060, kOtherPid);
  EXPECT_EQ(before + 64 * kMillisecond, times_.back()) << "has nothing to forget";
}

TEST_F(RunningClockTest, NeverFalls) {
  std::mt19937 random;
  for (int i = 0; i < 3000; ++i) {
    pcr_ += random() % 50 == 0 ? static_cast<int64_t>(random() % 20'000) - 10'000
                               : static_cast<int64_t>(random() % 120);
    pushPcr(pcr_);
    push(static_cast<int>(random() % 40));
  }
  EXPECT_TRUE(std::is_sorted(times_.begin(), times_.end()));
}

}  // namespace
}  // namespace tevra::tools
