#include "tools/stream/ts_packet.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::PacketWriter;

TEST(TsPacket, ReadsAndSetsThePid) {
  TsPacket packet = PacketWriter().stream(0x1ABC, 0);
  packet.data()[1] |= 0xE0;
  EXPECT_EQ(0x1ABC, packet.pid());
  packet.setPid(0x0042);
  EXPECT_EQ(0x0042, packet.pid());
  EXPECT_EQ(0xE0, packet.data()[1] & 0xE0) << "flags beside the PID stay";
}

TEST(TsPacket, KeepsFlagsWhenTheCounterIsSet) {
  TsPacket packet = PacketWriter().stream(100, 0);
  packet.setContinuityCounter(-1);
  EXPECT_EQ(15, packet.continuityCounter());
  EXPECT_TRUE(packet.hasPayload());
}

TEST(TsPacket, PayloadStartsBehindTheAdaptationField) {
  TsPacket packet = PacketWriter().stream(100, 0);
  EXPECT_EQ(4U, packet.payloadOffset());
  packet.data()[3] = 0x30;
  packet.data()[4] = 7;
  EXPECT_EQ(12U, packet.payloadOffset());
}

TEST(TsPacket, AdaptationFieldBeyondThePacketLeavesNoPayload) {
  TsPacket packet = PacketWriter().stream(100, 0xFF);
  packet.data()[3] = 0x30;
  EXPECT_EQ(kTsPacketSize, packet.payloadOffset());
  EXPECT_FALSE(packet.pcr().has_value());
}

TEST(TsPacket, PacketWithoutPayloadHasNone) {
  TsPacket packet = PacketWriter().stream(100, 0);
  packet.data()[3] = 0x20;
  packet.data()[4] = 183;
  EXPECT_FALSE(packet.hasPayload());
  EXPECT_EQ(kTsPacketSize, packet.payloadOffset());
}

TEST(TsPacket, ReadsThePcrToTheLastTick) {
  for (const int64_t pcr :
       {int64_t{0}, int64_t{299}, int64_t{300}, int64_t{27'000'123}, kPcrModulus - 1}) {
    EXPECT_EQ(pcr, PacketWriter().stream(100, 0, pcr).pcr());
  }
}

TEST(TsPacket, TellsTheTimeBetweenPcrsFromAJumpOfTheClock) {
  EXPECT_EQ(1, pcrInterval(0, 1));
  EXPECT_EQ(1, pcrInterval(kPcrModulus - 1, 0)) << "the clock begins again";
  EXPECT_EQ(5 * kSystemClock, pcrInterval(7, 7 + 5 * kSystemClock));
  EXPECT_EQ(0, pcrInterval(7, 8 + 5 * kSystemClock));
  EXPECT_EQ(0, pcrInterval(1, 0));
}

TEST(TsPacket, HasNoPcrWhenTheAdaptationFieldIsTooShortForOne) {
  TsPacket packet = PacketWriter().stream(100, 0, 1000);
  packet.data()[4] = 6;
  EXPECT_FALSE(packet.pcr().has_value());
}

TEST(TsPacket, HasNoPcrThatCanBeBelievedWhenItIsFlaggedAsDamaged) {
  TsPacket packet = PacketWriter().stream(100, 0, 1000);
  packet.data()[1] |= 0x80;
  EXPECT_FALSE(packet.pcr().has_value());
}

TEST(TsPacket, WithoutPayloadKeepsThePcrAndFillsThePacketWithStuffing) {
  TsPacket packet = PacketWriter().stream(100, 0xAA, 123'456);
  packet.data()[1] |= 0x40;
  const TsPacket stripped = packet.withoutPayload();
  EXPECT_EQ(123'456, stripped.pcr());
  EXPECT_FALSE(stripped.hasPayload());
  EXPECT_FALSE(stripped.unitStart());
  EXPECT_EQ(183, stripped.data()[4]);
  for (size_t i = 12; i < kTsPacketSize; ++i) {
    ASSERT_EQ(0xFF, stripped.data()[i]) << "byte " << i;
  }
}

}  // namespace
}  // namespace tevra::tools
