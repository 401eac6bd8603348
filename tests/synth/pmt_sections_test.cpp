#include "synth/pmt_sections.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/psi_synthesis.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"
#include "tests/synth/pmt_sections_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST_F(PmtSections, AnEmptyPmtIsASectionOfSixteenBytes) {
  EXPECT_THAT(sizes(somePmt()), ElementsAre(16U));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(PmtSections, WhatFitsOneSectionToTheLastByteStaysThere) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(kMostBytes - 5))};
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U));
  EXPECT_THAT(fake::logLines(), IsEmpty());
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, OneByteBeyondThatTakesASecondSection) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(500)),
                makeStream(4, 0x71, makeFillers(kMostBytes - 510 + 1))};
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 505U, 16U + 504U));
  EXPECT_THAT(fake::logLines(), ElementsAre(needs(2)));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, TheBoundCountsTheProgrammesDescriptorsToo) {
  PMT pmt = somePmt();
  pmt.descriptors = makeFillers(400);
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(kMostBytes - 405))};
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U));
  pmt.descriptors = makeFillers(401);
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 401U, 16U + kMostBytes - 400U));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, BareStreamsFillASectionToTheLast) {
  PMT pmt = somePmt();
  for (int32_t pid = 0x100; pid < 0x100 + 201; ++pid) {
    pmt.esList.push_back(makeStream(0x1B, pid));
  }
  pmt.descriptors = {makeFiller(3)};
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U));
  pmt.descriptors = {makeFiller(4)};
  EXPECT_THAT(sizes(pmt), ElementsAre(1020U, 21U));
  expectRoundTrip(pmt);
  pmt.descriptors.clear();
  pmt.esList.push_back(makeStream(4, 0x1000));
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 1005U, 21U));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, ABareStreamBehindAFullProgrammeLoopHasASectionOfItsOwn) {
  PMT pmt = somePmt();
  pmt.descriptors = makeFillers(kMostBytes);
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U));
  pmt.esList = {makeStream(0x1B, 0x70)};
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U, 21U));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, AProgrammeLoopTooLongForOneSectionGoesOnInTheNext) {
  PMT pmt = somePmt();
  pmt.descriptors = makeFillers(8 * 257);
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(400)), makeStream(4, 0x71)};
  // Three descriptors of 257 bytes to a section; the last two leave room for both streams.
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 771U, 16U + 771U, 16U + 514U + 405U + 5U));
  EXPECT_THAT(fake::logLines(), ElementsAre(needs(3)));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, EverySectionRepeatsWhatBelongsToTheWholeTable) {
  PMT pmt = somePmt();
  for (int32_t pid = 0x100; pid < 0x110; ++pid) {
    pmt.esList.push_back(makeStream(0x1B, pid, makeFillers(600)));
  }
  const std::vector<std::string> sections = bytes(pmt);
  ASSERT_THAT(sections, SizeIs(16));
  for (size_t i = 0; i < sections.size(); ++i) {
    EXPECT_EQ(sections[i].substr(0, 1), "\x02");
    EXPECT_EQ(sections[i].substr(3, 3), "\x04\xB1\xD7") << "number, version 11, current";
    EXPECT_EQ(byteAt(sections[i], 6), static_cast<int>(i));
    EXPECT_EQ(byteAt(sections[i], 7), 15);
    EXPECT_EQ(sections[i].substr(8, 2), "\xE0\x66") << "PCR_PID";
    EXPECT_EQ(crc32Of(sections[i]), 0U);
  }
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, StreamsAreNeverTornApartNorMovedForward) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(2, 0x70, makeFillers(600)), makeStream(4, 0x71, makeFillers(600)),
                makeStream(6, 0x72, makeFillers(10))};
  // The third would fit the first section, too, but would then overtake the second.
  EXPECT_THAT(sizes(pmt), ElementsAre(16U + 605U, 16U + 605U + 15U));
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, ManySectionsComeBackAsTheyWere) {
  PMT pmt = somePmt();
  pmt.descriptors = makeFillers(1500);
  for (int32_t i = 0; i < 500; ++i) {
    pmt.esList.push_back(makeStream(i % 256, 0x20 + i, makeFillers(static_cast<size_t>(2 + i))));
  }
  expectRoundTrip(pmt);
}

TEST_F(PmtSections, ATooLongDescriptorTakesNoRoom) {
  PMT pmt = somePmt();
  pmt.esList = {makeStream(0x1B, 0x70, makeFillers(kMostBytes - 5))};
  pmt.esList[0].descriptors.insert(pmt.esList[0].descriptors.begin(),
                                   makeDescriptor(0xAA, std::string(256, 'x')));
  EXPECT_THAT(sizes(pmt), ElementsAre(1024U));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{4, "", "Descriptor [0xaa] of [256] bytes left out"}));
}

TEST_F(PmtSections, TheSynthesisSendsAllSectionsOnOneCounter) {
  const ServiceTables service = makeServiceTables();
  ServiceWorkRecord work = makeWorkRecord(service);
  for (int32_t pid = 0x100; pid < 0x110; ++pid) {
    work.pmt.esList.push_back(makeStream(0x1B, pid, makeFillers(700)));
  }
  StoredTables stored;
  EXPECT_EQ(synthPMT(work, stored), 0);
  const Packets& packets = work.outputTables.pmtPackets;
  EXPECT_THAT(sectionsOf(packets, kPmtPid), SizeIs(16));
  EXPECT_EQ(decodePmt(packets, 1201), work.outputTables.dvbTables.pmt);
  const LogLine saves{7, "", "Saves a new PMT in myTableStores struct"};
  // 721 bytes take 4 packets; the first section, 16 bytes longer, takes 5.
  const LogLine made{7, "", "Numero de paquetes necesarios para la sintesis [65]"};
  EXPECT_THAT(fake::logLines(), ElementsAre(saves, needs(16), made));
}

}  // namespace
}  // namespace tevra::test
