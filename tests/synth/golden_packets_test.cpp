#include <gtest/gtest.h>

#include "tests/support/golden_file.h"
#include "tests/synth/bitstream_judge.h"
#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

/** Packets as they have always been sent, and what a receiver reads in them. */
class GoldenPackets : public fake::PlatformTest {
 protected:
  /** The table synthesised on top of the stored one, in as many sections, which `decode` reads and
   * others take. */
  template <class Table, class Decode, class Judge>
  void expectGolden(const std::string& name, const Table& former, size_t sections, Decode decode,
                    Judge faultOf) {
    using Way = Synthesis<Table>;
    TableStore tables;
    tables.*Way::kStored = former;
    StoredTables stored(tables);
    EXPECT_EQ(Way::kRun(work_, stored), 0);
    const Packets& packets = Way::packets(work_.outputTables);
    EXPECT_TRUE(matchesGolden(name, packets));
    EXPECT_EQ(sectionsOf(packets, Way::kPid).size(), sections);
    EXPECT_EQ(decode(packets), Way::record(work_.outputTables));
    EXPECT_EQ(faultOf(packets), "");
  }

  void expectPat(const std::string& name) {
    PAT stored;
    stored.version = 4;
    expectGolden(name, stored, 1, decodePat, faultOfPat);
  }

  void expectSdt(const std::string& name) {
    SDT stored;
    stored.version = 30;
    expectGolden(name, stored, 1, decodeSdt, faultOfSdt);
  }

  void expectPmt(const std::string& name, size_t sections) {
    PMT stored;
    stored.version = 31;
    expectGolden(
        name, stored, sections, [](const Packets& packets) { return decodePmt(packets, 1201); },
        [](const Packets& packets) { return faultOfPmt(packets, kPmtPid); });
  }

  ServiceTables service_ = makeServiceTables();
  ServiceWorkRecord work_ = makeWorkRecord(service_);
};

TEST_F(GoldenPackets, PatOfOneService) {
  expectPat("pat");
}

TEST_F(GoldenPackets, SdtOfATelevisionService) {
  expectSdt("sdt");
}

TEST_F(GoldenPackets, SdtWithTheLongestName) {
  work_.identity.serviceName = std::string(400, 'N');
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
