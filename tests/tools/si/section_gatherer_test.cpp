#include "tools/si/section_gatherer.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::makePat;
using test::PacketWriter;

constexpr int kPid = 0x0020;

using Versions = std::vector<int>;

class SectionGathererTest : public testing::Test {
 protected:
  /** The versions of the sections that the packets make. */
  Versions versionsOf(const std::vector<TsPacket>& packets) {
    Versions versions;
    for (const TsPacket& packet : packets) {
      for (const Section& section : gatherer_.push(packet)) {
        versions.push_back(section.version);
      }
    }
    return versions;
  }
  /** The same of the packets that the writer makes of sections, one behind the other. */
  Versions versionsOf(const Bytes& sections) {
    return versionsOf(writer_.sections(kPid, sections));
  }

  PacketWriter writer_;
  SectionFaults faults_;
  SectionGatherer gatherer_{faults_};
};

/** A PAT that takes several packets. */
Bytes longPat(int version) {
  test::Programs programs;
  for (int number = 1; number <= 200; ++number) {
    programs.emplace_back(number, number + 100);
  }
  return makePat(1, version, programs);
}

/** A section that leaves two bytes of its packet to what is behind it. */
Bytes fillingAllButTwoBytes(int version) {
  return test::makeSection({0x01, 0, version}, test::descriptor(0x80, Bytes(167, 0)));
}

TEST_F(SectionGathererTest, PutsASectionTogetherFromItsPackets) {
  const std::vector<TsPacket> packets = writer_.section(kPid, longPat(7));
  ASSERT_EQ(5U, packets.size());
  for (size_t i = 0; i + 1 < packets.size(); ++i) {
    EXPECT_TRUE(gatherer_.push(packets[i]).empty());
  }
  const std::vector<Section> sections = gatherer_.push(packets.back());
  ASSERT_EQ(1U, sections.size());
  const PAT& pat = std::get<PAT>(sections[0].content);
  ASSERT_EQ(200U, pat.programs.size());
  for (const PATProgram& program : pat.programs) {
    EXPECT_EQ(program.programNumber + 100, program.pid);
  }
}

TEST_F(SectionGathererTest, FindsSeveralSectionsInOnePacket) {
  const Bytes bytes = test::joined({makePat(1, 1, {}), makePat(1, 2, {}), makePat(1, 3, {})});
  EXPECT_EQ((Versions{1, 2, 3}), versionsOf(bytes));
}

TEST_F(SectionGathererTest, DropsASectionWithAWrongCrc) {
  Bytes broken = makePat(1, 1, {{5, 50}});
  broken[9] ^= 1;
  EXPECT_TRUE(versionsOf(broken).empty());
  EXPECT_EQ(1U, faults_.crcErrors);
  EXPECT_EQ((Versions{2}), versionsOf(makePat(1, 2, {})));
  EXPECT_EQ(1U, faults_.crcErrors);
}

TEST_F(SectionGathererTest, DropsASectionWithAWrongCrcAndTakesTheNextInThePacket) {
  Bytes broken = makePat(1, 1, {{5, 50}});
  broken.back() ^= 1;
  const Bytes bytes = test::joined({broken, makePat(1, 2, {})});
  EXPECT_EQ((Versions{2}), versionsOf(bytes));
}

TEST_F(SectionGathererTest, DropsASectionThatMissesAPacket) {
  std::vector<TsPacket> packets = writer_.section(kPid, longPat(1));
  packets.erase(packets.begin() + 2);
  EXPECT_TRUE(versionsOf(packets).empty());
  EXPECT_EQ(1U, faults_.discontinuities);
  EXPECT_EQ((Versions{2}), versionsOf(longPat(2)));
}

TEST_F(SectionGathererTest, PassesOverRepeatedPacketsEvenBehindAGap) {
  EXPECT_EQ((Versions{1}), versionsOf(makePat(1, 1, {})));
  writer_.lose(kPid, 3);
  std::vector<TsPacket> twice;
  for (const TsPacket& packet : writer_.section(kPid, longPat(2))) {
    twice.push_back(packet);
    twice.push_back(packet);
  }
  EXPECT_EQ((Versions{2}), versionsOf(twice));
}

TEST_F(SectionGathererTest, TakesTheNextSectionWhenOneIsCutShort) {
  std::vector<TsPacket> packets = writer_.section(kPid, longPat(1));
  packets.resize(2);
  for (int i = 0; i < 2; ++i) {
    packets.push_back(writer_.section(kPid, makePat(1, 2 + i, {}))[0]);
    packets.back().setContinuityCounter(2 + i);  // nothing is missing by the counter
  }
  EXPECT_EQ((Versions{2, 3}), versionsOf(packets));
  EXPECT_EQ(1U, faults_.truncatedSections);
  EXPECT_EQ(0U, faults_.crcErrors);
}

TEST_F(SectionGathererTest, TakesTheNextSectionWhenOneIsCutShortInItsHeader) {
  auto packets =
      writer_.sections(kPid, test::joined({fillingAllButTwoBytes(1), makePat(1, 2, {})}));
  packets.at(1) = PacketWriter().section(kPid, makePat(1, 3, {}))[0];
  packets[1].setContinuityCounter(1);
  EXPECT_EQ((Versions{1, 3}), versionsOf(packets));
  EXPECT_EQ(1U, faults_.truncatedSections);
}

TEST_F(SectionGathererTest, TakesStuffingForNoSection) {
  EXPECT_EQ((Versions{1}), versionsOf(fillingAllButTwoBytes(1)));
  EXPECT_EQ((Versions{2}), versionsOf(makePat(1, 2, {})));
  EXPECT_EQ(0U, faults_.truncatedSections);
}

TEST_F(SectionGathererTest, EndsASectionBeforeThePointerAndStartsTheNextBehindIt) {
  std::vector<TsPacket> packets = writer_.section(kPid, longPat(1));
  TsPacket& last = packets.back();
  const size_t rest = longPat(1).size() - 183 - 3 * 184;
  const Bytes next = makePat(1, 2, {});
  ASSERT_LT(5 + rest + next.size(), kTsPacketSize);
  Bytes tail(last.data() + 4, last.data() + 4 + rest);
  last.data()[1] |= 0x40;
  last.data()[4] = static_cast<uint8_t>(rest);
  std::copy(tail.begin(), tail.end(), last.data() + 5);
  std::copy(next.begin(), next.end(), last.data() + 5 + rest);
  EXPECT_EQ((Versions{1, 2}), versionsOf(packets));
  EXPECT_EQ(0U, faults_.truncatedSections);
}

TEST_F(SectionGathererTest, PassesOverPacketsItCannotRead) {
  const TsPacket good = PacketWriter().section(kPid, makePat(1, 1, {}))[0];
  const auto with = [&good](size_t index, uint8_t value) {
    TsPacket packet = good;
    packet.data()[index] = value;
    return packet;
  };
  const uint8_t flags = good.data()[1];
  EXPECT_TRUE(gatherer_.push(with(1, flags | 0x80)).empty()) << "transport error";
  EXPECT_TRUE(gatherer_.push(with(3, 0x90)).empty()) << "scrambled";
  EXPECT_TRUE(gatherer_.push(with(3, 0x00)).empty()) << "neither payload nor adaptation field";
  TsPacket adaptationField = with(3, 0x30);
  adaptationField.data()[4] = 0xFF;
  EXPECT_TRUE(gatherer_.push(adaptationField).empty()) << "adaptation field beyond the packet";
  EXPECT_TRUE(gatherer_.push(with(4, 0xFF)).empty()) << "pointer_field beyond the packet";
  EXPECT_TRUE(gatherer_.push(with(4, 183)).empty()) << "pointer_field at the packet's end";
  EXPECT_EQ(1U, gatherer_.push(good).size());
}

TEST_F(SectionGathererTest, CountsSectionsWhoseLengthsDoNotAddUp) {
  const Bytes malformed = test::makeSection({0x02, 1}, {0xE1, 0x00, 0xFF, 0xFF});
  EXPECT_TRUE(versionsOf(malformed).empty());
  EXPECT_EQ(1U, faults_.malformedSections);
  const Bytes unwanted = test::makeSection({0xC0, 1}, {0xE1, 0x00, 0xFF, 0xFF});
  EXPECT_TRUE(versionsOf(unwanted).empty());
  EXPECT_EQ(1U, faults_.malformedSections);
}

TEST_F(SectionGathererTest, WantsNoCrcOfTablesThatHaveNone) {
  Bytes section = {0x00, 0xF0, 5, 0, 0, 0, 0, 0};
  for (const int tableId : {0x70, 0x71, 0x72, 0x7E}) {
    section[0] = static_cast<uint8_t>(tableId);
    EXPECT_TRUE(versionsOf(section).empty());
    EXPECT_EQ(0U, faults_.crcErrors) << tableId;
  }
  section[0] = 0x4F;
  EXPECT_TRUE(versionsOf(section).empty());
  EXPECT_EQ(1U, faults_.crcErrors) << "an EIT that nobody asked for has one";
}

TEST_F(SectionGathererTest, TakesALengthThatNoSectionHasForNoSection) {
  EXPECT_TRUE(versionsOf(Bytes{0x42, 0xFF, 0xFE, 0}).empty());
  EXPECT_EQ((Versions{4}), versionsOf(makePat(1, 4, {})));
  EXPECT_EQ(0U, faults_.truncatedSections);
}

TEST_F(SectionGathererTest, TakesSectionsOfNoLength) {
  const Bytes empty(170, 0x00);  // table_id 0, section_length 0, over and over
  EXPECT_TRUE(versionsOf(empty).empty());
  EXPECT_EQ((Versions{4}), versionsOf(makePat(1, 4, {})));
}

TEST(SectionGatherer, TellsOfEverySectionWhateverItsTable) {
  std::vector<SectionSeen> seen;
  SectionFaults faults;
  SectionGatherer gatherer(faults, [&](const SectionSeen& section) { seen.push_back(section); });
  Bytes wrong = makePat(7, 1, {{1, 100}}, 1, 2);
  wrong.back() ^= 1;
  const Bytes malformed = test::makeSection({0x02, 101, 1}, {0xFF});
  const Bytes other = test::makeSection({0x46, 9, 1}, {});
  const Bytes tdt = {0x70, 0x70, 0x05, 0xC0, 0x79, 0x12, 0x45, 0x00};
  PacketWriter writer;
  for (const Bytes& section : {wrong, malformed, other, tdt}) {
    for (const TsPacket& packet : writer.section(kPid, section)) {
      (void)gatherer.push(packet);
    }
  }
  ASSERT_EQ(4U, seen.size());
  EXPECT_EQ(SectionSeen::State::kWrongCrc, seen[0].state);
  EXPECT_EQ(7, seen[0].extension);
  EXPECT_EQ(1, seen[0].number);
  EXPECT_EQ(SectionSeen::State::kMalformed, seen[1].state);
  EXPECT_EQ(2, seen[1].tableId);
  EXPECT_EQ(SectionSeen::State::kSound, seen[2].state);
  EXPECT_EQ(0x46, seen[2].tableId);
  EXPECT_EQ(SectionSeen::State::kSound, seen[3].state);
  EXPECT_EQ(0, seen[3].extension);
}

}  // namespace
}  // namespace tevra::tools
