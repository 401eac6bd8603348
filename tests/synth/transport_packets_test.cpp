#include "tests/synth/transport_packets.h"

#include <gtest/gtest.h>

#include <stdexcept>

// What the other tests judge by must itself be able to say no.

namespace tevra::test {
namespace {

/** A PAT of transport stream 1 with programme 1 on PID 0x100, whose CRC is a published example's.
 */
std::string knownSection() {
  return {"\x00\xB0\x0D\x00\x01\xC1\x00\x00\x00\x01\xE1\x00\xE8\xF9\x5E\x7D", 16};
}

Packets knownPackets() {
  return {std::string("\x47\x40\x00\x10\x00", 5) + knownSection() + std::string(167, '\xFF')};
}

TEST(TransportPackets, TheCrcOfTheStandardsCheckStringIsRight) {
  EXPECT_EQ(crc32Of(std::string("123456789")), 0x0376E6E7U);
  EXPECT_EQ(crc32Of(std::string()), 0xFFFFFFFFU);
}

TEST(TransportPackets, AKnownTableIsRead) {
  EXPECT_EQ(sectionsOf(knownPackets(), 0), std::vector<std::string>{knownSection()});
  const PAT pat = decodePat(knownPackets());
  EXPECT_EQ(pat.transportStreamId, 1);
  ASSERT_EQ(pat.programs.size(), 1U);
  EXPECT_EQ(pat.programs[0].programNumber, 1);
  EXPECT_EQ(pat.programs[0].pid, 0x100);
}

TEST(TransportPackets, EveryChangedByteIsNoticed) {
  for (size_t i = 0; i < 188; ++i) {
    Packets packets = knownPackets();
    packets[0][i] = static_cast<char>(packets[0][i] ^ 0x01);
    EXPECT_THROW((void)sectionsOf(packets, 0), std::runtime_error) << "byte " << i;
  }
}

TEST(TransportPackets, PacketsOfAnotherSizePidOrCounterAreRefused) {
  Packets longer = knownPackets();
  longer[0] += '\xFF';
  EXPECT_THROW((void)sectionsOf(longer, 0), std::runtime_error);
  EXPECT_THROW((void)sectionsOf(knownPackets(), 1), std::runtime_error);
  const Packets twice = {knownPackets()[0], knownPackets()[0]};
  EXPECT_THROW((void)sectionsOf(twice, 0), std::runtime_error);
}

TEST(TransportPackets, PacketsOfStuffingAloneAreRefused) {
  Packets packets = knownPackets();
  packets.push_back(std::string("\x47\x00\x00\x11", 4) + std::string(184, '\xFF'));
  EXPECT_THROW((void)sectionsOf(packets, 0), std::runtime_error);
}

TEST(TransportPackets, NoTableIsNoTable) {
  EXPECT_THROW((void)decodePat({}), std::runtime_error);
  EXPECT_THROW((void)decodeSdt(knownPackets()), std::runtime_error);
  EXPECT_THROW((void)decodePmt(knownPackets(), 1), std::runtime_error);
}

}  // namespace
}  // namespace tevra::test
