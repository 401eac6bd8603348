#include <gtest/gtest.h>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/support/golden_file.h"
#include "tests/synth/builders.h"
#include "tests/synth/transport_packets.h"

namespace tevra::test {
namespace {

/** Packets as they have always been sent, and what a receiver reads in them. */
class GoldenPackets : public fake::PlatformTest {
 protected:
  GoldenPackets() {
    stores_.pat.version = 4;
    stores_.sdt.version = 30;
    stores_.pmt.version = 31;
  }

  void expectPat(const std::string& name) {
    EXPECT_EQ(synthPAT(work_, stores_.pat), 0);
    EXPECT_TRUE(matchesGolden(name, work_.outputTables.patPackets));
    EXPECT_EQ(sectionsOf(work_.outputTables.patPackets, 0).size(), 1U);
    EXPECT_EQ(decodePat(work_.outputTables.patPackets), work_.outputTables.dvbTables.pat);
  }

  void expectSdt(const std::string& name) {
    EXPECT_EQ(synthSDT(work_, stores_.sdt), 0);
    EXPECT_TRUE(matchesGolden(name, work_.outputTables.sdtPackets));
    EXPECT_EQ(sectionsOf(work_.outputTables.sdtPackets, 0x11).size(), 1U);
    EXPECT_EQ(decodeSdt(work_.outputTables.sdtPackets), work_.outputTables.dvbTables.sdt);
  }

  void expectPmt(const std::string& name, size_t sections) {
    EXPECT_EQ(synthPMT(work_, stores_.pmt), 0);
    EXPECT_TRUE(matchesGolden(name, work_.outputTables.pmtPackets));
    EXPECT_EQ(sectionsOf(work_.outputTables.pmtPackets, kPmtPid).size(), sections);
    EXPECT_EQ(decodePmt(work_.outputTables.pmtPackets, 1201), work_.outputTables.dvbTables.pmt);
  }

  ServiceWorkRecord work_ = makeWorkRecord();
  TableStore stores_;
};

TEST_F(GoldenPackets, PatOfOneService) {
  expectPat("pat");
}

TEST_F(GoldenPackets, SdtOfATelevisionService) {
  expectSdt("sdt");
}

TEST_F(GoldenPackets, SdtWithTheLongestName) {
  work_.serviceName = std::string(400, 'N');
  expectSdt("sdt_longest_name");
}

TEST_F(GoldenPackets, PmtOfATelevisionService) {
  work_.pmt.descriptors = {makeCaDescriptor(0x0500, 0x70, "provider"),
                           makeDescriptor(0x0E, "\xC0\x12\x34")};
  work_.pmt.esList.push_back(
      makeStream(6, 0x68,
                 {makeDescriptor(0x52, "\x07"), makeLanguageDescriptor({"eng", "fra"}),
                  makeDescriptor(0x7A, std::string(1, '\0'))}));
  work_.pmt.esList.push_back(
      makeStream(6, 0x69, {makeDescriptor(0x59, "spa\x10\x01\x02\x03\x04")}));
  expectPmt("pmt", 1);
}

TEST_F(GoldenPackets, PmtOfThreePackets) {
  work_.pmt = makePmt(kInputProgram, 0x66);
  work_.pmt.currentNext = true;
  work_.pmt.descriptors = makeFillers(400 - 16);
  expectPmt("pmt_three_packets", 1);
}

TEST_F(GoldenPackets, PmtOfTwoSections) {
  work_.pmt.descriptors = makeFillers(300);
  work_.pmt.esList[0].descriptors = makeFillers(350);
  work_.pmt.esList[1].descriptors = makeFillers(360);
  expectPmt("pmt_two_sections", 2);
}

}  // namespace
}  // namespace tevra::test
