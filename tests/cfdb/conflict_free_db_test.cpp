#include "cfdb/conflict_free_db.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/tables.h"

namespace tevra {
namespace {

using fake::LogLine;
using fake::logLines;
using test::dvbTime;
using test::makeCaDescriptor;
using test::makeDescriptor;
using test::makePat;
using test::makePmt;
using test::makeStream;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

using ConflictFreeDBTest = test::ConflictFreeDBFixture;

SDT someSdt() {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.transportStreamId = 7;
  sdt.version = 31;
  sdt.currentNext = true;
  sdt.originalNetworkId = 0x20;
  SDTService& service = sdt.services.emplace_back();
  service.serviceId = 3401;
  service.eitSchedule = true;
  service.runningStatus = 4;
  service.freeCA = true;
  service.descriptors = {makeDescriptor(0x48, std::string("\x01\0\0", 3)),
                         makeCaDescriptor(1, 0x100)};
  return sdt;
}

TOT someTot() {
  TOT tot;
  tot.tableId = 0x73;
  tot.utcTime = static_cast<int64_t>(dvbTime(60000, 12, 0, 0));
  tot.descriptors = {makeDescriptor(0x58, "ITA"), makeCaDescriptor(1, 0x100)};
  return tot;
}

CAT someCat() {
  CAT cat;
  cat.version = 9;
  cat.currentNext = true;
  cat.descriptors = {makeCaDescriptor(0x0B00, 0x500, "emm"), makeDescriptor(0x52, "a"),
                     makeCaDescriptor(0x1801, 0x501)};
  return cat;
}

// Construction

TEST_F(ConflictFreeDBTest, StartsWithThePoolLineAndNothingElse) {
  test::FakeOwner owner;
  const ConflictFreeDB database(2, owner);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [3] PID poll [500/699]"}));
  EXPECT_THAT(owner.calls(), IsEmpty());
}

TEST_F(ConflictFreeDBTest, HoldsNothingAtFirstAndLeavesTheOutputsAlone) {
  PAT pat = makePat(1, {{2, 3}});
  SDT sdt = someSdt();
  CAT cat = someCat();
  TOT tot = someTot();
  PMT pmt = makePmt(4, 5);
  EXPECT_FALSE(database_.getConflictFreePAT(pat));
  EXPECT_FALSE(database_.getConflictFreeSDT(sdt));
  EXPECT_FALSE(database_.getConflictFreeCAT(cat));
  EXPECT_FALSE(database_.getConflictFreeTOT(tot));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 0));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 4));
  EXPECT_FALSE(database_.getOutputPMT(pmt, 4));
  EXPECT_EQ(pat, makePat(1, {{2, 3}}));
  EXPECT_EQ(sdt, someSdt());
  EXPECT_EQ(cat, someCat());
  EXPECT_EQ(tot, someTot());
  EXPECT_EQ(pmt, makePmt(4, 5));
  EXPECT_THAT(logLines(), IsEmpty());
}

// PAT

TEST_F(ConflictFreeDBTest, PatKeepsEverythingButThePids) {
  PAT pat = makePat(7, {{0, 0x10}, {3401, 0x100}, {3402, 0x200}, {3403, 0x100}});
  pat.version = 31;
  pat.currentNext = true;
  PAT expected = makePat(7, {{0, 101}, {3401, 102}, {3402, 103}, {3403, 102}});
  expected.version = 31;
  expected.currentNext = true;
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, pat));
  EXPECT_EQ(out, expected);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{7, "", "Guardo PAT en DB local!"}));
}

TEST_F(ConflictFreeDBTest, PatIsHandedOutAsStored) {
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}})));
  PAT stored;
  EXPECT_TRUE(database_.getConflictFreePAT(stored));
  EXPECT_EQ(stored, out);
}

TEST_F(ConflictFreeDBTest, PatReplacesItsPredecessor) {
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}, {2, 0x200}})));
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{2, 0x200}})));
  PAT stored;
  EXPECT_TRUE(database_.getConflictFreePAT(stored));
  EXPECT_EQ(stored, makePat(7, {{2, 102}}));
}

TEST_F(ConflictFreeDBTest, PatReplacesWhatTheOutputHeld) {
  PAT out = makePat(1, {{8, 9}, {10, 11}});
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {})));
  EXPECT_EQ(out, makePat(7, {}));
}

TEST_F(ConflictFreeDBTest, PatsOfOneTransportStreamKeepTheMappingAndAnotherRestartsIt) {
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{2, 0x200}, {1, 0x100}})));
  EXPECT_EQ(out, makePat(7, {{2, 102}, {1, 101}}));
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(8, {{2, 0x200}, {1, 0x100}})));
  EXPECT_EQ(out, makePat(8, {{2, 101}, {1, 102}}));
  EXPECT_EQ(database_.getInputPID(101), 0x200);
  EXPECT_EQ(database_.getInputPID(102), 0x100);
}

TEST_F(ConflictFreeDBTest, AnotherTransportStreamLeavesTheOtherTablesAlone) {
  PAT pat;
  PMT pmt;
  EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(1, 0x101)));
  EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(8, {{1, 0x300}})));
  PMT stored;
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 1));
  EXPECT_EQ(stored, makePmt(1, 102));
  EXPECT_EQ(database_.getInputPID(102), kUnknownPid);
}

TEST_F(ConflictFreeDBTest, AThousandProgrammesAreRemappedInOrder) {
  PAT pat = makePat(7, {});
  PAT expected = makePat(7, {});
  for (int32_t number = 1; number <= 1000; ++number) {
    PATProgram program;
    program.programNumber = number;
    program.pid = 0x1FFF - number;
    pat.programs.push_back(program);
    program.pid = 100 + number;
    expected.programs.push_back(program);
  }
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, pat));
  EXPECT_EQ(out, expected);
}

TEST_F(ConflictFreeDBTest, OutputPidsAreTheSameAcrossTables) {
  PAT pat;
  PMT pmt;
  CAT cat;
  CAT input;
  input.descriptors = {makeCaDescriptor(1, 0x300)};
  EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.setConflictFreePMT(
      pmt, makePmt(1, 0x100, {makeStream(27, 0x100, {makeCaDescriptor(1, 0x300)})})));
  EXPECT_TRUE(database_.setConflictFreeCAT(cat, input));
  EXPECT_EQ(pmt, makePmt(1, 101, {makeStream(27, 101, {makeCaDescriptor(1, 102)})}));
  EXPECT_THAT(cat.descriptors, ElementsAre(makeCaDescriptor(1, 102)));
  EXPECT_EQ(database_.getConflictFreePID(0x300), 102);
}

// SDT and TOT

TEST_F(ConflictFreeDBTest, SdtIsStoredUnchanged) {
  EXPECT_TRUE(database_.setConflictFreeSDT(someSdt()));
  EXPECT_THAT(logLines(), ElementsAre(LogLine{7, "", "Guardo SDT en DB local!"}));
  SDT stored;
  EXPECT_TRUE(database_.getConflictFreeSDT(stored));
  EXPECT_EQ(stored, someSdt());
  EXPECT_EQ(database_.getConflictFreePID(-1), 101);  // its descriptors got no PID
}

TEST_F(ConflictFreeDBTest, SdtReplacesItsPredecessor) {
  EXPECT_TRUE(database_.setConflictFreeSDT(someSdt()));
  EXPECT_TRUE(database_.setConflictFreeSDT(SDT()));
  SDT stored = someSdt();
  EXPECT_TRUE(database_.getConflictFreeSDT(stored));
  EXPECT_EQ(stored, SDT());
}

TEST_F(ConflictFreeDBTest, TotIsStoredUnchangedAndHandedOut) {
  TOT out;
  EXPECT_TRUE(database_.setConflictFreeTOT(out, someTot()));
  EXPECT_EQ(out, someTot());
  EXPECT_THAT(logLines(), ElementsAre(LogLine{7, "", "Guardo TOT en DB local!"}));
  TOT stored;
  EXPECT_TRUE(database_.getConflictFreeTOT(stored));
  EXPECT_EQ(stored, someTot());
  EXPECT_EQ(database_.getConflictFreePID(-1), 101);
}

TEST_F(ConflictFreeDBTest, TotReplacesItsPredecessor) {
  TOT out;
  EXPECT_TRUE(database_.setConflictFreeTOT(out, someTot()));
  EXPECT_TRUE(database_.setConflictFreeTOT(out, TOT()));
  EXPECT_EQ(out, TOT());
  TOT stored = someTot();
  EXPECT_TRUE(database_.getConflictFreeTOT(stored));
  EXPECT_EQ(stored, TOT());
}

// CAT

TEST_F(ConflictFreeDBTest, CatKeepsEverythingButTheEmmPids) {
  CAT expected = someCat();
  expected.descriptors = {makeCaDescriptor(0x0B00, 101, "emm"), makeDescriptor(0x52, "a"),
                          makeCaDescriptor(0x1801, 102)};
  CAT out;
  EXPECT_TRUE(database_.setConflictFreeCAT(out, someCat()));
  EXPECT_EQ(out, expected);
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [01280/0500] oDesc PID [00101/0065]"},
                          LogLine{7, "", "iDesc PID [01281/0501] oDesc PID [00102/0066]"},
                          LogLine{7, "", "Guardo CAT en DB local!"}));
  CAT stored;
  EXPECT_TRUE(database_.getConflictFreeCAT(stored));
  EXPECT_EQ(stored, expected);
}

TEST_F(ConflictFreeDBTest, CatReplacesItsPredecessor) {
  CAT out;
  EXPECT_TRUE(database_.setConflictFreeCAT(out, someCat()));
  EXPECT_TRUE(database_.setConflictFreeCAT(out, CAT()));
  EXPECT_EQ(out, CAT());
  CAT stored = someCat();
  EXPECT_TRUE(database_.getConflictFreeCAT(stored));
  EXPECT_EQ(stored, CAT());
}

// What is not implemented on purpose

TEST_F(ConflictFreeDBTest, SettingANitIsNotImplementedButSucceeds) {
  NIT out;
  out.networkId = 5;
  const NIT before = out;
  EXPECT_TRUE(database_.setConflictFreeNIT(out, NIT()));
  EXPECT_EQ(out, before);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[setConflictFreeNIT] Not implemented!"}));
}

TEST_F(ConflictFreeDBTest, SettingABatIsNotImplementedButSucceeds) {
  BAT out;
  out.bouquetId = 5;
  const BAT before = out;
  EXPECT_TRUE(database_.setConflictFreeBAT(out, BAT()));
  EXPECT_EQ(out, before);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[setConflictFreeBAT] Not implemented!"}));
}

TEST_F(ConflictFreeDBTest, SettingAnEitIsNotImplementedButSucceeds) {
  EIT out;
  out.serviceId = 5;
  const EIT before = out;
  EXPECT_TRUE(database_.setConflictFreeEIT(out, EIT()));
  EXPECT_EQ(out, before);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[setConflictFreeEIT] Not implemented!"}));
  EXPECT_THAT(owner_.calls(), IsEmpty());
}

TEST_F(ConflictFreeDBTest, GettingANitIsNotImplementedAndFails) {
  NIT out;
  out.networkId = 5;
  const NIT before = out;
  EXPECT_FALSE(database_.getConflictFreeNIT(out));
  EXPECT_EQ(out, before);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[getConflictFreeNIT] Not implemented!"}));
}

TEST_F(ConflictFreeDBTest, GettingABatIsNotImplementedAndFails) {
  BAT out;
  out.bouquetId = 5;
  const BAT before = out;
  EXPECT_FALSE(database_.getConflictFreeBAT(out));
  EXPECT_EQ(out, before);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[getConflictFreeBAT] Not implemented!"}));
}

TEST_F(ConflictFreeDBTest, NitAndBatAreMissingEvenAfterTheyWereSet) {
  NIT nit;
  BAT bat;
  EXPECT_TRUE(database_.setConflictFreeNIT(nit, NIT()));
  EXPECT_TRUE(database_.setConflictFreeBAT(bat, BAT()));
  EXPECT_FALSE(database_.getConflictFreeNIT(nit));
  EXPECT_FALSE(database_.getConflictFreeBAT(bat));
}

// Clearing

TEST_F(ConflictFreeDBTest, ClearEmptiesTheTablesSilently) {
  PAT pat;
  PMT pmt;
  CAT cat;
  SDT sdt;
  EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.setConflictFreeSDT(someSdt()));
  EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(1, 0x101)));
  EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(2, 0x201)));
  EXPECT_TRUE(database_.setConflictFreeCAT(cat, someCat()));
  fake::clearLog();
  database_.clearConflictFreeDB();
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_FALSE(database_.getConflictFreePAT(pat));
  EXPECT_FALSE(database_.getConflictFreeSDT(sdt));
  EXPECT_FALSE(database_.getConflictFreeCAT(cat));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 1));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 2));
  EXPECT_FALSE(database_.getOutputPMT(pmt, 1));
}

TEST_F(ConflictFreeDBTest, ClearKeepsTheTot) {
  TOT out;
  EXPECT_TRUE(database_.setConflictFreeTOT(out, someTot()));
  database_.clearConflictFreeDB();
  TOT stored;
  EXPECT_TRUE(database_.getConflictFreeTOT(stored));
  EXPECT_EQ(stored, someTot());
}

TEST_F(ConflictFreeDBTest, ClearKeepsThePidMappingAndItsTransportStream) {
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}, {2, 0x200}})));
  database_.clearConflictFreeDB();
  EXPECT_EQ(database_.getInputPID(101), 0x100);
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{2, 0x200}, {3, 0x300}})));
  EXPECT_EQ(out, makePat(7, {{2, 102}, {3, 103}}));
}

TEST_F(ConflictFreeDBTest, ClearedTwiceTheDatabaseCanBeFilledAgain) {
  database_.clearConflictFreeDB();
  database_.clearConflictFreeDB();
  PAT out;
  EXPECT_TRUE(database_.setConflictFreePAT(out, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.getConflictFreePAT(out));
  EXPECT_EQ(out, makePat(7, {{1, 101}}));
}

}  // namespace
}  // namespace tevra
