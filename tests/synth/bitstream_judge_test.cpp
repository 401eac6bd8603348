#include "tests/synth/bitstream_judge.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

// What the other tests judge by must itself be able to say no.

namespace tevra::test {
namespace {

constexpr int kPmtPid = 0x100;

using Bytes = std::vector<int>;

/** A packet with the section that has these bytes and a right length and CRC_32. */
std::string packetOf(int pid, int tableId, const Bytes& bytes) {
  std::string section = {static_cast<char>(tableId), '\xB0', static_cast<char>(bytes.size() + 4)};
  section.append(bytes.begin(), bytes.end());
  const uint32_t crc = crc32Of(section);
  for (const int shift : {24, 16, 8, 0}) {
    section += static_cast<char>(crc >> shift & 0xFF);
  }
  std::string packet = {'\x47', static_cast<char>(0x40 | pid >> 8), static_cast<char>(pid & 0xFF),
                        '\x10', '\0'};
  packet += section;
  packet.resize(188, '\xFF');
  return packet;
}

Packets pat(const Bytes& programs) {
  Bytes bytes = {0, 1, 0xC1, 0, 0};
  bytes.insert(bytes.end(), programs.begin(), programs.end());
  return {packetOf(0, 0, bytes)};
}

Packets sdt(const Bytes& services) {
  Bytes bytes = {0, 1, 0xC1, 0, 0, 0, 1, 0xFF};
  bytes.insert(bytes.end(), services.begin(), services.end());
  return {packetOf(0x11, 0x42, bytes)};
}

Packets pmt(const Bytes& streams, int lastSection = 0) {
  Bytes bytes = {0, 1, 0xC1, 0, lastSection, 0xE1, 1, 0xF0, 0};
  bytes.insert(bytes.end(), streams.begin(), streams.end());
  return {packetOf(kPmtPid, 2, bytes)};
}

TEST(BitstreamJudge, TakesWhatIsSound) {
  EXPECT_EQ(faultOfPat(pat({0, 1, 0xE1, 0})), "");
  EXPECT_EQ(faultOfSdt(sdt({0, 1, 0xFC, 0x80, 5, 0x48, 3, 1, 0, 0})), "");
  EXPECT_EQ(faultOfPmt(pmt({0x1B, 0xE1, 1, 0xF0, 3, 0x52, 1, 1}), kPmtPid), "");
}

TEST(BitstreamJudge, NoticesEveryChangedByteOfASection) {
  const Packets sound = pat({0, 1, 0xE1, 0});
  for (size_t i = 4; i < 5 + 16; ++i) {
    Packets packets = sound;
    packets[0][i] = static_cast<char>(packets[0][i] ^ 0x01);
    EXPECT_NE(faultOfPat(packets), "") << "byte " << i;
  }
}

TEST(BitstreamJudge, RefusesPacketsThatAReceiverWouldNotTake) {
  const std::string sound = pat({0, 1, 0xE1, 0})[0];
  const auto faultWith = [&](size_t index, int byte) {
    std::string packet = sound;
    packet[index] = static_cast<char>(byte);
    return faultOfPat({packet});
  };
  EXPECT_EQ(faultWith(0, 0x48), "no packet");
  EXPECT_EQ(faultOfPat({sound + '\xFF'}), "no packet");
  EXPECT_EQ(faultWith(2, 1), "another PID");
  EXPECT_EQ(faultWith(1, 0xC0), "no payload that could be read");  // in error
  EXPECT_EQ(faultWith(3, 0x90), "no payload that could be read");  // scrambled
  EXPECT_EQ(faultWith(3, 0x20), "no payload that could be read");
  EXPECT_EQ(faultWith(4, 200), "incomplete table");  // begins behind the packet's end
  EXPECT_EQ(faultOfPat({sound, sound}), "discontinuity");
}

TEST(BitstreamJudge, RefusesTablesThatAreNotThere) {
  EXPECT_EQ(faultOfPat({}), "incomplete table");
  EXPECT_EQ(faultOfPmt(pmt({}, 1), kPmtPid), "incomplete table");
  EXPECT_EQ(faultOfPat({packetOf(0, 0x42, {0, 1, 0xC1, 0, 0, 0, 1, 0xFF})}), "invalid section");
}

TEST(BitstreamJudge, RefusesLengthsThatDoNotAddUp) {
  EXPECT_EQ(faultOfPat(pat({0, 1, 0xE1})), "invalid section");
  EXPECT_EQ(faultOfSdt(sdt({0, 1, 0xFC, 0x80, 3, 0x48, 5, 1})), "invalid section");
  EXPECT_EQ(faultOfSdt(sdt({0, 1, 0xFC, 0x80, 9, 0x48, 3, 1, 0, 0})), "invalid section");
  EXPECT_EQ(faultOfPmt(pmt({0x1B, 0xE1, 1, 0xF0, 5, 0x52, 1}), kPmtPid), "invalid section");
  EXPECT_EQ(faultOfPmt(pmt({0x1B, 0xE1, 1, 0xF0, 3, 0x52, 2, 1}), kPmtPid), "invalid section");
}

TEST(BitstreamJudge, RefusesEntriesThatContradictEachOther) {
  EXPECT_EQ(faultOfPat(pat({0, 1, 0xE1, 0, 0, 1, 0xE1, 1})), "invalid table");
  EXPECT_EQ(faultOfSdt(sdt({0, 1, 0xFC, 0x80, 0, 0, 1, 0xFC, 0x80, 0})), "invalid table");
}

}  // namespace
}  // namespace tevra::test
