#include "tools/stream/continuity.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

constexpr int kPid = 0x100;

class ContinuityTest : public testing::Test {
 protected:
  TsPacket next() { return writer_.stream(kPid, 0); }

  test::PacketWriter writer_;
  Continuity continuity_;
};

TEST_F(ContinuityTest, BreaksOnceAtAGapAlsoOfScrambledPackets) {
  writer_.lose(kPid, 5);  // the first counter is not 0
  for (int i = 0; i < 20; ++i) {
    EXPECT_FALSE(continuity_.breaksAt(next()));
  }
  writer_.lose(kPid, 3);
  TsPacket scrambled = next();
  scrambled.data()[3] |= 0x80;
  EXPECT_TRUE(continuity_.breaksAt(scrambled));
  EXPECT_FALSE(continuity_.breaksAt(next()));
}

TEST_F(ContinuityTest, TakesAPacketThatComesTwiceButNotThrice) {
  const TsPacket packet = next();
  EXPECT_FALSE(continuity_.breaksAt(packet));
  EXPECT_FALSE(continuity_.breaksAt(packet));
  EXPECT_TRUE(continuity_.breaksAt(packet));
}

TEST_F(ContinuityTest, TakesNoOtherPacketForACopyButOneWithAnotherPcr) {
  const TsPacket first = writer_.stream(kPid, 1, 0);
  TsPacket later = test::PacketWriter().stream(kPid, 1, 27);
  EXPECT_FALSE(continuity_.breaksAt(first));
  EXPECT_FALSE(continuity_.breaksAt(later));
  later = next();
  EXPECT_FALSE(continuity_.breaksAt(later));
  later.data()[kTsPacketSize - 1] ^= 1;
  EXPECT_TRUE(continuity_.breaksAt(later));
}

TEST_F(ContinuityTest, AllowsAGapWhereThePacketAnnouncesIt) {
  EXPECT_FALSE(continuity_.breaksAt(next()));
  writer_.lose(kPid, 5);
  TsPacket packet = writer_.stream(kPid, 0, 0);
  packet.data()[5] |= 0x80;
  EXPECT_FALSE(continuity_.breaksAt(packet));
}

TEST_F(ContinuityTest, ExpectsNoStepOfPacketsWithoutPayload) {
  EXPECT_FALSE(continuity_.breaksAt(writer_.stream(kPid, 0, 0)));
  TsPacket clockOnly = writer_.stream(kPid, 0, 27).withoutPayload();
  clockOnly.setContinuityCounter(0);
  EXPECT_FALSE(continuity_.breaksAt(clockOnly));
  clockOnly.setContinuityCounter(5);
  EXPECT_TRUE(continuity_.breaksAt(clockOnly));
}

TEST_F(ContinuityTest, BeginsAnewBehindADamagedPacket) {
  EXPECT_FALSE(continuity_.breaksAt(next()));
  TsPacket damaged = next();
  damaged.data()[1] |= 0x80;
  damaged.setContinuityCounter(9);
  EXPECT_FALSE(continuity_.breaksAt(damaged));
  writer_.lose(kPid, 3);
  EXPECT_FALSE(continuity_.breaksAt(next()));
  writer_.lose(kPid, 3);
  EXPECT_TRUE(continuity_.breaksAt(next()));
}

}  // namespace
}  // namespace tevra::tools
