#include "tools/extract/continuity_counters.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

constexpr int kPid = 100;

class ContinuityCountersTest : public testing::Test {
 protected:
  /** A packet of the stream with this counter. */
  static TsPacket packet(int counter, bool hasPayload = true) {
    TsPacket packet = test::PacketWriter().stream(kPid, 0, 0);
    packet = hasPayload ? packet : packet.withoutPayload();
    packet.setContinuityCounter(counter);
    return packet;
  }
  int number(bool hasPayload = true) {
    TsPacket copy = packet(7, hasPayload);
    counters_.number(copy);
    return copy.continuityCounter();
  }
  int carry(int counter, bool hasPayload = true) {
    TsPacket copy = packet(counter, hasPayload);
    counters_.carry(copy);
    return copy.continuityCounter();
  }

  ContinuityCounters counters_;
};

TEST_F(ContinuityCountersTest, NumberFromZeroEachPidByItself) {
  for (int i = 0; i < 20; ++i) {
    EXPECT_EQ(i % 16, number());
  }
  TsPacket other = packet(7);
  other.setPid(kPid + 1);
  counters_.number(other);
  EXPECT_EQ(0, other.continuityCounter());
}

TEST_F(ContinuityCountersTest, RepeatTheLastOneInAPacketWithoutPayload) {
  EXPECT_EQ(15, number(false));
  EXPECT_EQ(0, number());
  EXPECT_EQ(0, number(false));
  EXPECT_EQ(1, number());
}

TEST_F(ContinuityCountersTest, LeaveAStreamAsItIsWithItsLosses) {
  for (const int counter : {5, 6, 6, 9, 15, 0, 3}) {
    EXPECT_EQ(counter, carry(counter));
  }
}

TEST_F(ContinuityCountersTest, RunOnWhenAnotherStreamComes) {
  EXPECT_EQ(5, carry(5));
  counters_.change(kPid);
  EXPECT_EQ(6, carry(12));
  EXPECT_EQ(7, carry(13));
  EXPECT_EQ(10, carry(0)) << "two are lost here, too";
  counters_.change(kPid);
  EXPECT_EQ(10, carry(3, false)) << "has no payload";
  EXPECT_EQ(11, carry(4));
  counters_.changeAll();
  EXPECT_EQ(12, carry(4));
}

TEST_F(ContinuityCountersTest, RunOnBetweenWhatIsNumberedAndWhatIsCarried) {
  EXPECT_EQ(14, carry(14));
  EXPECT_EQ(15, number());
  EXPECT_EQ(0, carry(8));
  EXPECT_EQ(1, carry(9));
}

}  // namespace
}  // namespace tevra::tools
