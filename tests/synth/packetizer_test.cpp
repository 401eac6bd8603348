#include "synth/packetizer.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/fake_platform.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr int kPid = 0x1ABC;

class Packetizer : public fake::PlatformTest {
 protected:
  int packetize(const SectionsPtr& sections) {
    return packetizeSections(packets_, makePacketTemplate(kPid), sections.get());
  }

  Packets packets_;
};

/** The bytes of a section of `size` bytes whose CRC is right, for a table id of the test's own. */
std::string sectionBytes(size_t size, int tableId) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) {
    bytes[i] = static_cast<char>(i * 7 + size);
  }
  bytes[0] = static_cast<char>(tableId);
  bytes[1] = static_cast<char>(0xB0 | (size - 3) >> 8);
  bytes[2] = static_cast<char>((size - 3) & 0xFF);
  const uint32_t crc = crc32Of(bytes.substr(0, size - 4));
  for (size_t i = 0; i < 4; ++i) {
    bytes[size - 4 + i] = static_cast<char>(crc >> (24 - 8 * i));
  }
  return bytes;
}

/** A section as libdvbpsi holds it; with the syntax indicator its last 4 bytes are the CRC. */
SectionsPtr makeSection(const std::string& bytes, bool syntaxIndicator = true) {
  SectionsPtr section(dvbpsi_NewPSISection(static_cast<int>(bytes.size()) + 4));
  std::copy(bytes.begin(), bytes.end(), section->p_data);
  section->b_syntax_indicator = syntaxIndicator;
  section->p_payload_end = section->p_data + bytes.size() - (syntaxIndicator ? 4 : 0);
  return section;
}

SectionsPtr chain(SectionsPtr first, SectionsPtr second) {
  first->p_next = second.release();
  return first;
}

size_t packetsFor(size_t sectionSize) {
  return sectionSize <= 183 ? 1 : 1 + (sectionSize - 183 + 183) / 184;
}

TEST_F(Packetizer, TheTemplateHoldsSyncBytePidAndStuffing) {
  const PacketTemplate packet = makePacketTemplate(0x1234);
  EXPECT_EQ(packet[0], 0x47);
  EXPECT_EQ(packet[1], 0x12);
  EXPECT_EQ(packet[2], 0x34);
  EXPECT_EQ(packet[3], 0x00);
  EXPECT_THAT(std::vector<uint8_t>(packet.begin() + 4, packet.end()), Each(0xFF));
}

TEST_F(Packetizer, ATemplateTakesTheLowThirteenBitsOfAPid) {
  for (const int32_t pid : {-1, 0xFFFF, 0x1FFF}) {
    EXPECT_EQ(makePacketTemplate(pid)[1], 0x1F);
    EXPECT_EQ(makePacketTemplate(pid)[2], 0xFF);
  }
  EXPECT_EQ(makePacketTemplate(0x2000)[1], 0x00);
  EXPECT_EQ(makePacketTemplate(0x2000)[2], 0x00);
}

TEST_F(Packetizer, NoSectionsEmptyTheList) {
  packets_ = {"old"};
  EXPECT_EQ(packetize(nullptr), 0);
  EXPECT_THAT(packets_, IsEmpty());
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "Numero de paquetes necesarios para la sintesis [0]"}));
}

TEST_F(Packetizer, ASmallSectionIsOnePacketFilledWithStuffing) {
  packets_ = {"old", "older"};
  const std::string section = sectionBytes(16, 0x00);
  EXPECT_EQ(packetize(makeSection(section)), 1);
  EXPECT_THAT(packets_, ElementsAre(std::string("\x47\x5A\xBC\x10\x00", 5) + section +
                                    std::string(167, '\xFF')));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "Numero de paquetes necesarios para la sintesis [1]"}));
}

TEST_F(Packetizer, OnlyTheFirstPacketOfASectionHasThePointerField) {
  const std::string section = sectionBytes(400, 0x02);
  EXPECT_EQ(packetize(makeSection(section)), 3);
  EXPECT_THAT(packets_, ElementsAre(std::string("\x47\x5A\xBC\x10\x00", 5) + section.substr(0, 183),
                                    std::string("\x47\x1A\xBC\x11", 4) + section.substr(183, 184),
                                    std::string("\x47\x1A\xBC\x12", 4) + section.substr(367) +
                                        std::string(151, '\xFF')));
  EXPECT_TRUE(fake::logged(7, "Numero de paquetes necesarios para la sintesis [3]"));
}

TEST_F(Packetizer, SectionsOfEverySizeArriveAsTheyWereSent) {
  for (size_t size = 12; size <= 1024; ++size) {
    const std::string section = sectionBytes(size, 0x02);
    ASSERT_EQ(packetize(makeSection(section)), static_cast<int>(packetsFor(size))) << size;
    ASSERT_THAT(sectionsOf(packets_, kPid), ElementsAre(section)) << size;
  }
}

TEST_F(Packetizer, EverySectionStartsInAPacketOfItsOwn) {
  const std::string first = sectionBytes(200, 0x02);
  const std::string second = sectionBytes(20, 0x02);
  const std::string third = sectionBytes(183, 0x02);
  EXPECT_EQ(packetize(chain(makeSection(first), chain(makeSection(second), makeSection(third)))),
            4);
  EXPECT_THAT(sectionsOf(packets_, kPid), ElementsAre(first, second, third));
  EXPECT_EQ(packets_[2].substr(0, 5), std::string("\x47\x5A\xBC\x12\x00", 5));
  EXPECT_EQ(packets_[3].substr(0, 5), std::string("\x47\x5A\xBC\x13\x00", 5));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "Numero de paquetes necesarios para la sintesis [4]"}));
}

TEST_F(Packetizer, TheCounterRunsOverSectionsAndAround) {
  const std::string section = sectionBytes(1024, 0x02);  // 6 packets
  SectionsPtr sections;
  for (int i = 0; i < 6; ++i) {
    sections = chain(makeSection(section), std::move(sections));
  }
  EXPECT_EQ(packetize(sections), 36);
  EXPECT_THAT(sectionsOf(packets_, kPid), SizeIs(6));  // which checks the counters
  EXPECT_EQ(packets_[15][3], '\x1F');
  EXPECT_EQ(packets_[16][3], '\x10');
}

TEST_F(Packetizer, TheCounterGoesOnFromTheTemplates) {
  PacketTemplate packet = makePacketTemplate(kPid);
  packet[0] = 0;     // set right
  packet[3] = 0xEF;  // scrambling and adaptation bits go, the counter stays
  const SectionsPtr section = makeSection(sectionBytes(400, 0x02));
  packetizeSections(packets_, packet, section.get());
  EXPECT_EQ(packets_[0].substr(0, 4), "\x47\x5A\xBC\x1F");
  EXPECT_EQ(packets_[1].substr(0, 4), "\x47\x1A\xBC\x10");
  EXPECT_EQ(packets_[2].substr(0, 4), "\x47\x1A\xBC\x11");
}

TEST_F(Packetizer, ASectionWithoutSyntaxIndicatorHasNoCrc) {
  const std::string bytes(
      "\x73\x70\x05"
      "times",
      8);
  EXPECT_EQ(packetize(makeSection(bytes, false)), 1);
  EXPECT_EQ(packets_[0].substr(5), bytes + std::string(175, '\xFF'));
}

TEST_F(Packetizer, TheCrcDecidesWhetherAnotherPacketIsNeeded) {
  // The same payload: with CRC_32 it overflows the packet, without it does not.
  const std::string bytes = sectionBytes(186, 0x02);
  EXPECT_EQ(packetize(makeSection(bytes, true)), 2);
  EXPECT_EQ(packetize(makeSection(bytes.substr(0, 182), false)), 1);
}

}  // namespace
}  // namespace tevra::test
