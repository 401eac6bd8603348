#include "tools/report/facts/stream_census.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools::report {
namespace {

constexpr int kPid = 0x100;

class StreamCensusTest : public testing::Test {
 protected:
  PidCount count(int pid = kPid) { return census_.pids()[pid]; }
  TsPacket next() { return writer_.stream(kPid, 0); }

  test::PacketWriter writer_;
  StreamCensus census_;
};

TEST_F(StreamCensusTest, CountsPacketsByPid) {
  census_.push(next());
  census_.push(next());
  census_.push(writer_.stream(0x1FFF, 0));
  EXPECT_EQ(2U, census_.pids().size());
  EXPECT_EQ(2U, count().packets);
  EXPECT_EQ(1U, count(0x1FFF).packets);
  EXPECT_EQ(0U, count().continuityErrors);
}

TEST_F(StreamCensusTest, CountsAGapOnce) {
  for (int i = 0; i < 20; ++i) {
    census_.push(next());
  }
  writer_.lose(kPid, 3);
  census_.push(next());
  census_.push(next());
  EXPECT_EQ(1U, count().continuityErrors);
}

TEST_F(StreamCensusTest, CountsScrambledAndDamagedPackets) {
  TsPacket scrambled = next();
  scrambled.data()[3] |= 0x80;
  census_.push(scrambled);
  TsPacket damaged = next();
  damaged.data()[1] |= 0x80;
  damaged.setContinuityCounter(9);
  census_.push(damaged);
  EXPECT_EQ(1U, count().scrambled);
  EXPECT_EQ(1U, count().transportErrors);
  EXPECT_EQ(0U, count().continuityErrors) << "a damaged packet's counter says nothing";
}

TEST_F(StreamCensusTest, ExpectsNothingOfStuffing) {
  for (const int counter : {3, 3, 3, 9}) {
    TsPacket packet = writer_.stream(0x1FFF, 0);
    packet.setContinuityCounter(counter);
    packet.data()[3] |= 0xC0;
    census_.push(packet);
  }
  EXPECT_EQ(0U, count(0x1FFF).continuityErrors);
  EXPECT_EQ(0U, count(0x1FFF).scrambled);
}

TEST_F(StreamCensusTest, ReadsTheClockOfTdts) {
  EXPECT_FALSE(census_.firstClock().has_value());
  const auto push = [&](const test::Bytes& section) {
    for (const TsPacket& packet : writer_.section(kTotPid, section)) {
      census_.push(packet);
    }
  };
  push({0x70, 0x70, 0x05, 0xC0, 0x79, 0x12, 0x45, 0x00});
  push({0x70, 0x70, 0x05, 0xC0, 0x79, 0x12, 0x45, 0x10});
  push({0x70, 0x70, 0x05, 0xC0, 0x79, 0xFF, 0xFF, 0xFF});        // no time
  push({0x70, 0x70, 0x06, 0xC0, 0x79, 0x13, 0x00, 0x00, 0x00});  // no TDT
  ASSERT_TRUE(census_.firstClock() && census_.lastClock());
  EXPECT_EQ("1993-10-13 12:45:00", dateAndTime(*census_.firstClock()));
  EXPECT_EQ("1993-10-13 12:45:10", dateAndTime(*census_.lastClock()));
}

TEST_F(StreamCensusTest, SurvivesTimesThatGoBeyondThePacket) {
  TsPacket packet = writer_.section(kTotPid, {0x70, 0x7F, 0xFF, 0x00}).at(0);
  census_.push(packet);
  packet.data()[4] = 0xFF;  // pointer_field
  census_.push(packet);
  EXPECT_FALSE(census_.lastClock().has_value());
}

}  // namespace
}  // namespace tevra::tools::report
