#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/psi_synthesis.h"
#include "tests/synth/pmt_sections_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

constexpr size_t kMostSections = 256;

/** What no number of sections can carry. */
class PmtSectionLimits : public PmtSections {
 protected:
  /** Each stream fills a section. */
  static PMT pmtOfSections(size_t count) {
    PMT pmt = somePmt();
    for (size_t i = 0; i < count; ++i) {
      pmt.esList.push_back(makeStream(0x1B, static_cast<int32_t>(i), makeFillers(kMostBytes - 5)));
    }
    return pmt;
  }

  static LogLine doNotFit(const std::string& pid, int missing, int all) {
    return {3, "",
            "[synthPMT] ES PID [" + pid + "]: [" + std::to_string(missing) + "] of [" +
                std::to_string(all) + "] descriptors do not fit a section."};
  }
};

TEST_F(PmtSectionLimits, AStreamOneByteLongerLosesItsLastDescriptor) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(kMostBytes - 5 + 1))};  // 3 of 257 and 233
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 5U + 771U));
  EXPECT_THAT(fake::logLines(), ElementsAre(doNotFit("0x0070", 1, 4)));
  PMT carried = pmt;
  carried.esList[0].descriptors.pop_back();
  EXPECT_EQ(decodePmt(packetsOf(pmt), 1201), carried);
}

TEST_F(PmtSectionLimits, NothingBehindTheFirstThatDoesNotFitIsCarriedEither) {
  PMT pmt = somePmt();
  std::vector<Descriptor> descriptors = makeFillers(4 * 257);
  descriptors.push_back(makeFiller(2));
  descriptors.push_back(makeFiller(3));
  pmt.esList = {makeStream(2, 0x6F), makeStream(0x1B, 0x70, descriptors), makeStream(4, 0x71)};
  PMT carried = pmt;
  carried.esList[1].descriptors.resize(3);
  EXPECT_EQ(decodePmt(packetsOf(pmt), 1201), carried);
  EXPECT_THAT(fake::logLines(), ElementsAre(doNotFit("0x0070", 3, 6)));
}

TEST_F(PmtSectionLimits, EveryStreamThatDoesNotFitHasItsLineBeforeTheNumberOfSections) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(4 * 257)), makeStream(4, 0x71),
                makeStream(0x1B, 0x1FFE, makeFillers(5 * 257))};
  PMT carried = pmt;
  carried.esList[0].descriptors.resize(3);
  carried.esList[2].descriptors.resize(3);
  EXPECT_EQ(decodePmt(packetsOf(pmt), 1201), carried);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(doNotFit("0x0070", 1, 4), doNotFit("0x1ffe", 2, 5), needs(2)));
}

TEST_F(PmtSectionLimits, TheAnswersRecordKeepsWhatThePacketsCannotCarry) {
  const ServiceTables service = makeServiceTables();
  ServiceWorkRecord work = makeWorkRecord(service);
  work.pmt.esList[1].descriptors = makeFillers(4 * 257);
  PMT whole = work.pmt;
  whole.programNumber = 1201;
  whole.version = 1;
  StoredTables stored;
  EXPECT_EQ(synthPMT(work, stored), 0);
  EXPECT_EQ(work.outputTables.dvbTables.pmt, whole);
  EXPECT_EQ(stored->pmt, whole);
  EXPECT_THAT(decodePmt(work.outputTables.pmtPackets, 1201).esList.at(1).descriptors, SizeIs(3));
  EXPECT_THAT(fake::logLines(4), ElementsAre(doNotFit("0x0067", 1, 4)));
}

TEST_F(PmtSectionLimits, WhatIsLeftOutMovesNoVersionWhenItIsLeftOutAgain) {
  const ServiceTables service = makeServiceTables();
  ServiceWorkRecord first = makeWorkRecord(service);
  first.pmt.esList[1].descriptors = makeFillers(4 * 257);
  ServiceWorkRecord second = first;
  StoredTables stored;
  synthPMT(first, stored);
  synthPMT(second, stored);
  EXPECT_EQ(stored->pmt.version, 1);
  EXPECT_EQ(first.outputTables, second.outputTables);
}

TEST_F(PmtSectionLimits, TwoHundredFiftySixSectionsAreCarried) {
  const PMT pmt = pmtOfSections(kMostSections);
  const Packets packets = packetsOf(pmt);
  EXPECT_THAT(fake::logLines(), ElementsAre(needs(256)));
  EXPECT_EQ(decodePmt(packets, 1201), pmt);
  const std::vector<std::string> sections = sectionsOf(packets, kPmtPid);
  ASSERT_THAT(sections, SizeIs(kMostSections));
  EXPECT_EQ(byteAt(sections[255], 6), 255);
  EXPECT_EQ(byteAt(sections[255], 7), 255);
}

TEST_F(PmtSectionLimits, WhatIsBeyondThemIsLeftOut) {
  const Packets packets = packetsOf(pmtOfSections(kMostSections + 2));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(needs(258), LogLine{3, "",
                                              "[synthPMT] PMT of service [1201]: [2] sections "
                                              "left out."}));
  const std::vector<std::string> sections = sectionsOf(packets, kPmtPid);
  ASSERT_THAT(sections, SizeIs(kMostSections));
  for (size_t i = 0; i < kMostSections; ++i) {
    ASSERT_EQ(byteAt(sections[i], 6), static_cast<int>(i));
    ASSERT_EQ(byteAt(sections[i], 7), 255);
  }
  EXPECT_EQ(decodePmt(packets, 1201), pmtOfSections(kMostSections));
}

TEST_F(PmtSectionLimits, TheAnswersRecordKeepsStreamsBeyondTheLastSection) {
  const ServiceTables service = makeServiceTables();
  ServiceWorkRecord work = makeWorkRecord(service);
  work.pmt.esList = pmtOfSections(kMostSections + 1).esList;
  StoredTables stored;
  EXPECT_EQ(synthPMT(work, stored), 0);
  EXPECT_THAT(work.outputTables.dvbTables.pmt.esList, SizeIs(kMostSections + 1));
  EXPECT_THAT(sectionsOf(work.outputTables.pmtPackets, kPmtPid), SizeIs(kMostSections));
}

}  // namespace
}  // namespace tevra::test
