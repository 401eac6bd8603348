#include "tools/report/facts/packet_times.h"

#include <gmock/gmock.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::report {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr int kClock = 0x100;
constexpr int kOther = 0x200;
constexpr int64_t kMs = kSystemClock / 1000;

class PacketTimesTest : public testing::Test {
 protected:
  void pcr(int pid, int64_t ms, bool announced = false) {
    TsPacket packet = writer_.stream(pid, 0, (ms * kMs + kPcrModulus) % kPcrModulus);
    packet.data()[5] = static_cast<uint8_t>(packet.data()[5] | (announced ? 0x80 : 0));
    times_.push(packet);
  }
  void others(int count) {
    for (int i = 0; i < count; ++i) {
      times_.push(writer_.stream(kOther, 0));
    }
  }

  test::PacketWriter writer_;
  std::vector<int64_t> told_;  // in milliseconds
  std::vector<uint64_t> numbers_;
  PacketTimes times_{[this](const PacketMark& /*mark*/, uint64_t number, int64_t time) {
    told_.push_back(time / kMs);
    numbers_.push_back(number);
  }};
};

TEST_F(PacketTimesTest, SpreadPacketsEvenlyBetweenPcrs) {
  pcr(kClock, 0);
  others(1);
  pcr(kClock, 20);
  others(3);
  pcr(kClock, 100);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20, 40, 60, 80, 100));
  EXPECT_THAT(numbers_, ElementsAre(0, 1, 2, 3, 4, 5, 6));
}

TEST_F(PacketTimesTest, KeepTheNearestRateBeforeTheFirstPcrAndBehindTheLast) {
  others(2);
  pcr(kClock, 5000);
  pcr(kClock, 5010);
  others(2);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20, 30, 40, 50));
}

TEST_F(PacketTimesTest, GoByOnePidAlone) {
  pcr(kClock, 0);
  pcr(kOther, 70'000);
  pcr(kClock, 20);
  pcr(kOther, 70'005);
  pcr(kClock, 40);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20, 30, 40));
}

TEST_F(PacketTimesTest, GoOnWhereTheClockJumps) {
  pcr(kClock, -10);  // over the end of the counter
  pcr(kClock, 0);
  pcr(kClock, 9000);
  pcr(kClock, 8000);
  pcr(kClock, 8060, /*announced=*/true);
  pcr(kClock, 8080);
  pcr(kClock, 8380);
  pcr(kClock, 8400);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20, 30, 40, 60, 80, 100));
}

TEST_F(PacketTimesTest, TakeARateThatFallsForGood) {
  pcr(kClock, 0);
  pcr(kClock, 10);
  pcr(kClock, 210);
  pcr(kClock, 410);
  pcr(kClock, 610);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20, 220, 420));
}

TEST_F(PacketTimesTest, TellNothingWithoutTwoPcrsThatFollowEachOther) {
  pcr(kClock, 0);
  pcr(kClock, 6000);
  pcr(kClock, 0);
  pcr(kClock, 20, /*announced=*/true);
  others(5);
  times_.finish();
  EXPECT_THAT(told_, IsEmpty());
}

TEST_F(PacketTimesTest, ForgetPacketsThatWaitTooLongForAClock) {
  pcr(kClock, 0);
  others(static_cast<int>(PacketTimes::kMaxPending) - 1);
  pcr(kClock, 1000);  // the first is forgotten
  others(1);
  pcr(kClock, 1020);
  times_.finish();
  EXPECT_THAT(told_, ElementsAre(0, 10, 20));
  EXPECT_EQ(PacketTimes::kMaxPending, numbers_.at(0));
}

}  // namespace
}  // namespace tevra::tools::report
