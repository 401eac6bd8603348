#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::SizeIs;

using SynthPat = SynthesisTest<PAT>;

TEST_F(SynthPat, TheFirstPatListsTheOutputServiceAlone) {
  EXPECT_EQ(synthesise(), 0);
  PAT expected = makePat(7, {{1201, kPmtPid}});
  expected.version = 1;
  expected.currentNext = true;
  EXPECT_EQ(output(), expected);
  EXPECT_EQ(stored(), expected);
  EXPECT_EQ(decodePat(packets()), expected);
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
}

TEST_F(SynthPat, OneProgrammeTakesSixteenBytesAndOnePacket) {
  synthesise();
  ASSERT_THAT(packets(), SizeIs(1));
  const std::string section("\x00\xB0\x0D\x00\x07\xC3\x00\x00\x04\xB1\xE0\x65", 12);
  const std::string& packet = packets()[0];
  EXPECT_EQ(packet.substr(0, 17), std::string("\x47\x40\x00\x10\x00", 5) + section);
  EXPECT_EQ(crc32Of(packet.substr(5, 16)), 0U);
  EXPECT_EQ(packet.substr(21), std::string(167, '\xFF'));
}

TEST_F(SynthPat, AnotherTransportStreamPidOrServiceMovesTheVersion) {
  synthesise();
  input_.identity.transportStreamId = 9;
  synthesise();
  EXPECT_EQ(output().version, 2);
  EXPECT_EQ(stored().transportStreamId, 9);
  service_.pat.programs[0].pid = 0x99;
  synthesise();
  EXPECT_EQ(output().version, 3);
  EXPECT_EQ(output().programs[0].pid, 0x99);
  input_.identity.outputSID = 1202;
  synthesise();
  EXPECT_EQ(output().version, 4);
  EXPECT_EQ(stored().programs[0].programNumber, 1202);
  EXPECT_THAT(fake::logLines(), ElementsAre(saves(), packetsMade(1)));
  EXPECT_EQ(decodePat(packets()), stored());
}

TEST_F(SynthPat, OtherProgrammesOfTheInputDoNotMatter) {
  synthesise();
  service_.pat = makePat(4711, {{1, 0x11}, {kInputProgram, kPmtPid}, {2, 0x22}});
  service_.pat.currentNext = true;
  synthesise();
  EXPECT_EQ(output().version, 1);
  EXPECT_THAT(fake::logLines(), ElementsAre(packetsMade(1)));
}

TEST_F(SynthPat, StoredProgrammesInExcessAreAChange) {
  synthesise();
  PAT two = stored();
  two.programs.push_back(two.programs[0]);
  restore(two);
  synthesise();
  EXPECT_EQ(output().version, 2);
  EXPECT_THAT(stored().programs, SizeIs(1));
}

TEST_F(SynthPat, AChangedPatTakesTheFlagOfTheInput) {
  PAT former;
  former.currentNext = true;
  restore(former);
  service_.pat.currentNext = false;
  synthesise();
  EXPECT_FALSE(stored().currentNext);
  EXPECT_FALSE(currentNextOf(section()));
}

TEST_F(SynthPat, AnAbsentProgrammeHasPidMinusOneInTheRecordAndAllOnesInTheSection) {
  service_.pat.programs.clear();
  EXPECT_EQ(synthesise(), 0);
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{3, "", "ProgramNumber not found."}, saves(), packetsMade(1)));
  EXPECT_EQ(output().programs, makePat(7, {{1201, 0xFFFF}}).programs);
  EXPECT_EQ(decodePat(packets()).programs, makePat(7, {{1201, 0x1FFF}}).programs);
  synthesise();
  EXPECT_EQ(output().version, 1);
}

TEST_F(SynthPat, APmtOnPidZeroIsInTheRecordAndNotInTheSection) {
  service_.pat.programs[0].pid = 0;
  synthesise();
  EXPECT_EQ(output().programs, makePat(7, {{1201, 0}}).programs);
  EXPECT_EQ(stored().programs, output().programs);
  const std::string empty("\x00\xB0\x09\x00\x07\xC3\x00\x00", 8);
  ASSERT_EQ(section().size(), empty.size() + 4);
  EXPECT_EQ(section().substr(0, empty.size()), empty);
  synthesise();
  EXPECT_EQ(output().version, 1);
  EXPECT_EQ(output().programs, makePat(7, {{1201, 0}}).programs);
  EXPECT_EQ(section().size(), 12U);
}

TEST_F(SynthPat, ValuesTooWideForASectionAreNarrowedOnceAndForAll) {
  input_.identity.transportStreamId = 0x12345;
  input_.identity.outputSID = 0x1F001;
  synthesise();
  EXPECT_EQ(output().transportStreamId, 0x2345);
  EXPECT_EQ(output().programs, makePat(0, {{0xF001, kPmtPid}}).programs);
  synthesise();
  EXPECT_EQ(output().version, 1);
}

}  // namespace
}  // namespace tevra::test
