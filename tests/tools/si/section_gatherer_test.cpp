#include "tools/si/section_gatherer.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::makePat;
using test::PacketWriter;

constexpr int kPid = 0x0020;

/** Pushes all and returns the versions of the sections that come out. */
std::vector<int> versionsFrom(SectionGatherer& gatherer, const std::vector<TsPacket>& packets) {
  std::vector<int> versions;
  for (const TsPacket& packet : packets) {
    for (const Section& section : gatherer.push(packet)) {
      versions.push_back(section.version);
    }
  }
  return versions;
}

/** A PAT that takes several packets. */
Bytes longPat(int version) {
  test::Programs programs;
  for (int number = 1; number <= 200; ++number) {
    programs.emplace_back(number, number + 100);
  }
  return makePat(1, version, programs);
}

TEST(SectionGatherer, PutsASectionTogetherFromItsPackets) {
  PacketWriter writer;
  SectionGatherer gatherer;
  const std::vector<TsPacket> packets = writer.section(kPid, longPat(7));
  ASSERT_EQ(5U, packets.size());
  std::vector<Section> sections;
  for (size_t i = 0; i + 1 < packets.size(); ++i) {
    EXPECT_TRUE(gatherer.push(packets[i]).empty());
  }
  sections = gatherer.push(packets.back());
  ASSERT_EQ(1U, sections.size());
  const PAT& pat = std::get<PAT>(sections[0].content);
  ASSERT_EQ(200U, pat.programs.size());
  for (const PATProgram& program : pat.programs) {
    EXPECT_EQ(program.programNumber + 100, program.pid);
  }
}

TEST(SectionGatherer, FindsSeveralSectionsInOnePacket) {
  PacketWriter writer;
  SectionGatherer gatherer;
  const Bytes bytes = test::joined({makePat(1, 1, {}), makePat(1, 2, {}), makePat(1, 3, {})});
  EXPECT_EQ((std::vector<int>{1, 2, 3}), versionsFrom(gatherer, writer.sections(kPid, bytes)));
}

TEST(SectionGatherer, DropsASectionWithAWrongCrc) {
  PacketWriter writer;
  SectionGatherer gatherer;
  Bytes broken = makePat(1, 1, {{5, 50}});
  broken[9] ^= 1;
  EXPECT_TRUE(versionsFrom(gatherer, writer.section(kPid, broken)).empty());
  EXPECT_EQ(1U, gatherer.crcErrors());
  EXPECT_EQ((std::vector<int>{2}), versionsFrom(gatherer, writer.section(kPid, makePat(1, 2, {}))));
  EXPECT_EQ(1U, gatherer.crcErrors());
}

TEST(SectionGatherer, DropsASectionWithAWrongCrcAndTakesTheNextInThePacket) {
  PacketWriter writer;
  SectionGatherer gatherer;
  Bytes broken = makePat(1, 1, {{5, 50}});
  broken.back() ^= 1;
  const Bytes bytes = test::joined({broken, makePat(1, 2, {})});
  EXPECT_EQ((std::vector<int>{2}), versionsFrom(gatherer, writer.sections(kPid, bytes)));
}

TEST(SectionGatherer, DropsASectionThatMissesAPacket) {
  PacketWriter writer;
  SectionGatherer gatherer;
  std::vector<TsPacket> packets = writer.section(kPid, longPat(1));
  packets.erase(packets.begin() + 2);
  EXPECT_TRUE(versionsFrom(gatherer, packets).empty());
  EXPECT_EQ(1U, gatherer.discontinuities());
  EXPECT_EQ((std::vector<int>{2}), versionsFrom(gatherer, writer.section(kPid, longPat(2))));
}

TEST(SectionGatherer, PassesOverRepeatedPacketsEvenBehindAGap) {
  PacketWriter writer;
  SectionGatherer gatherer;
  EXPECT_EQ((std::vector<int>{1}), versionsFrom(gatherer, writer.section(kPid, makePat(1, 1, {}))));
  writer.lose(kPid, 3);
  std::vector<TsPacket> twice;
  for (const TsPacket& packet : writer.section(kPid, longPat(2))) {
    twice.push_back(packet);
    twice.push_back(packet);
  }
  EXPECT_EQ((std::vector<int>{2}), versionsFrom(gatherer, twice));
}

TEST(SectionGatherer, TakesTheNextSectionWhenOneIsCutShort) {
  PacketWriter writer;
  SectionGatherer gatherer;
  std::vector<TsPacket> packets = writer.section(kPid, longPat(1));
  packets.resize(2);
  for (int i = 0; i < 2; ++i) {
    packets.push_back(writer.section(kPid, makePat(1, 2 + i, {}))[0]);
    packets.back().setContinuityCounter(2 + i);  // nothing is missing by the counter
  }
  EXPECT_EQ((std::vector<int>{2, 3}), versionsFrom(gatherer, packets));
  EXPECT_EQ(1U, gatherer.truncatedSections());
  EXPECT_EQ(0U, gatherer.crcErrors());
}

TEST(SectionGatherer, EndsASectionBeforeThePointerAndStartsTheNextBehindIt) {
  PacketWriter writer;
  SectionGatherer gatherer;
  std::vector<TsPacket> packets = writer.section(kPid, longPat(1));
  TsPacket& last = packets.back();
  const size_t rest = longPat(1).size() - 183 - 3 * 184;
  const Bytes next = makePat(1, 2, {});
  ASSERT_LT(5 + rest + next.size(), kTsPacketSize);
  Bytes tail(last.data() + 4, last.data() + 4 + rest);
  last.data()[1] |= 0x40;
  last.data()[4] = static_cast<uint8_t>(rest);
  std::copy(tail.begin(), tail.end(), last.data() + 5);
  std::copy(next.begin(), next.end(), last.data() + 5 + rest);
  EXPECT_EQ((std::vector<int>{1, 2}), versionsFrom(gatherer, packets));
  EXPECT_EQ(0U, gatherer.truncatedSections());
}

TEST(SectionGatherer, PassesOverPacketsItCannotRead) {
  const TsPacket good = PacketWriter().section(kPid, makePat(1, 1, {}))[0];
  const auto with = [&good](size_t index, uint8_t value) {
    TsPacket packet = good;
    packet.data()[index] = value;
    return packet;
  };
  const uint8_t flags = good.data()[1];
  SectionGatherer gatherer;
  EXPECT_TRUE(gatherer.push(with(1, flags | 0x80)).empty()) << "transport error";
  EXPECT_TRUE(gatherer.push(with(3, 0x90)).empty()) << "scrambled";
  EXPECT_TRUE(gatherer.push(with(3, 0x00)).empty()) << "neither payload nor adaptation field";
  TsPacket adaptationField = with(3, 0x30);
  adaptationField.data()[4] = 0xFF;
  EXPECT_TRUE(gatherer.push(adaptationField).empty()) << "adaptation field beyond the packet";
  EXPECT_TRUE(gatherer.push(with(4, 0xFF)).empty()) << "pointer_field beyond the packet";
  EXPECT_TRUE(gatherer.push(with(4, 183)).empty()) << "pointer_field at the packet's end";
  EXPECT_EQ(1U, gatherer.push(good).size());
}

TEST(SectionGatherer, CountsSectionsWhoseLengthsDoNotAddUp) {
  PacketWriter writer;
  SectionGatherer gatherer;
  const Bytes malformed = test::makeSection({0x02, 1}, {0xE1, 0x00, 0xFF, 0xFF});
  EXPECT_TRUE(versionsFrom(gatherer, writer.section(kPid, malformed)).empty());
  EXPECT_EQ(1U, gatherer.malformedSections());
  const Bytes unwanted = test::makeSection({0xC0, 1}, {0xE1, 0x00, 0xFF, 0xFF});
  EXPECT_TRUE(versionsFrom(gatherer, writer.section(kPid, unwanted)).empty());
  EXPECT_EQ(1U, gatherer.malformedSections());
}

TEST(SectionGatherer, TakesSectionsOfNoLength) {
  PacketWriter writer;
  SectionGatherer gatherer;
  const Bytes empty(170, 0x00);  // table_id 0, section_length 0, over and over
  EXPECT_TRUE(versionsFrom(gatherer, writer.sections(kPid, empty)).empty());
  EXPECT_EQ((std::vector<int>{4}), versionsFrom(gatherer, writer.section(kPid, makePat(1, 4, {}))));
}

}  // namespace
}  // namespace tevra::tools
