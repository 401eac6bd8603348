#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::SizeIs;

class SynthPmt : public SynthesisTest<PMT> {
 protected:
  PMT& filtered_ = input_.pmt;
};

TEST_F(SynthPmt, TheFirstPmtIsTheFilteredOneUnderTheOutputsNumber) {
  EXPECT_EQ(synthesise(), 0);
  PMT expected = filtered_;
  expected.programNumber = 1201;
  expected.version = 1;
  EXPECT_EQ(output(), expected);
  EXPECT_EQ(stored(), expected);
  EXPECT_EQ(decodePmt(packets(), 1201), expected);
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
}

TEST_F(SynthPmt, TheSectionIsExactToTheByte) {
  synthesise();
  const std::string expected = std::string("\x02\xB0\x1D\x04\xB1\xC3\x00\x00\xE0\x66\xF0\x00", 12) +
                               std::string("\x1B\xE0\x66\xF0\x00", 5) +
                               std::string("\x04\xE0\x67\xF0\x06\x0A\x04spa\x00", 11);
  ASSERT_THAT(sections(), SizeIs(1));
  EXPECT_EQ(section().substr(0, section().size() - 4), expected);
  EXPECT_EQ(packets()[0].substr(0, 5), std::string("\x47\x40\x65\x10\x00", 5));
}

TEST_F(SynthPmt, AStreamMoreOrAnotherPcrMovesTheVersion) {
  synthesise();
  filtered_.esList.push_back(makeStream(6, 0x68));
  synthesise();
  EXPECT_EQ(output().version, 2);
  filtered_.pcrPid = 0x67;
  synthesise();
  EXPECT_EQ(output().version, 3);
  input_.identity.outputSID = 1202;
  synthesise();
  EXPECT_EQ(output().version, 4);
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
  EXPECT_EQ(stored(), output());
  EXPECT_EQ(decodePmt(packets(), 1202), output());
}

TEST_F(SynthPmt, AnAbsentProgrammeIsSentOnTheLowBitsOfMinusOne) {
  service_.pat.programs.clear();
  EXPECT_EQ(synthesise(), 0);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "", "ProgramNumber not found."}, saves(), packetsMade(1)));
  EXPECT_THAT(sections(0x1FFF), SizeIs(1));
}

TEST_F(SynthPmt, ThePacketsTravelOnTheLastPidOfThatProgramme) {
  service_.pat = makePat(1, {{kInputProgram, 0x11}, {kInputProgram, 0x22}, {1201, 0x33}});
  synthesise();
  EXPECT_THAT(sections(0x22), SizeIs(1));
}

TEST_F(SynthPmt, OnlyTheLowThirteenBitsOfItsPidAreSent) {
  service_.pat.programs[0].pid = 0x2000 + 0x65;
  synthesise();
  EXPECT_THAT(sections(), SizeIs(1));
}

TEST_F(SynthPmt, TheNumberInTheRecordIsTheOneAskedForAndInTheSectionItsLowBits) {
  input_.identity.outputSID = 0x1F001;
  synthesise();
  EXPECT_EQ(output().programNumber, 0x1F001);
  EXPECT_EQ(decodePmt(packets(), 0xF001).programNumber, 0xF001);
  synthesise();
  EXPECT_EQ(output().version, 1);
}

}  // namespace
}  // namespace tevra::test
