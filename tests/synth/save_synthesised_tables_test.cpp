#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/saved_table_stores.h"
#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::Key;
using testing::SizeIs;

const LogLine kOnePacket = packetsMade(1);
const LogLine kHasToSave{7, "", "[MPTS2] has to save the new tables in a file"};
const LogLine kCannotSave{3, "", "[MPTS2] Error writing tables in file"};

class SavedTables : public fake::PlatformTest {
 protected:
  /** One call; the work record of the fixture stays as it is. */
  OutputTables save() {
    fake::clearLog();
    ServiceWorkRecord work = work_;
    saveSynthesisedTables(stores_, work);
    return work.outputTables;
  }

  /** The versions of one call's tables: PAT, SDT, PMT. */
  std::vector<int32_t> versions() {
    const DVBOutputTables tables = save().dvbTables;
    return {tables.pat.version, tables.sdt.version, tables.pmt.version};
  }

  SavedTableStores stores_;
  ServiceTables service_ = makeServiceTables();
  ServiceWorkRecord work_ = makeWorkRecord(service_);
};

TEST_F(SavedTables, TheFirstTimeAllThreeTablesAreNew) {
  EXPECT_THAT(versions(), ElementsAre(1, 1, 1));
  EXPECT_THAT(fake::logLines(), ElementsAre(saves<PAT>(), kOnePacket, saves<SDT>(), kOnePacket,
                                            saves<PMT>(), kOnePacket, kHasToSave));
}

TEST_F(SavedTables, TheEntryIsThatOfTheInputProgramme) {
  const OutputTables tables = save();
  const auto saved = stores_.saved();
  ASSERT_THAT(saved, ElementsAre(Key(kInputProgram)));
  const TableStore& store = saved.at(kInputProgram);
  EXPECT_EQ(store.pat, tables.dvbTables.pat);
  EXPECT_EQ(store.sdt, tables.dvbTables.sdt);
  EXPECT_EQ(store.pmt, tables.dvbTables.pmt);
  EXPECT_EQ(store.restartCounter, 0);
}

TEST_F(SavedTables, TheProgrammeIsThatOfThePmtAndNotTheOneAskedFor) {
  service_.inputSID = 5;
  const OutputTables tables = save();
  EXPECT_THAT(stores_.saved(), ElementsAre(Key(kInputProgram)));
  EXPECT_EQ(tables.dvbTables.pat.programs.at(0).pid, kPmtPid);
  EXPECT_EQ(tables.dvbTables.sdt.services.at(0).descriptors.at(0).data.at(0), 0x19);
  EXPECT_THAT(sectionsOf(tables.pmtPackets, kPmtPid), SizeIs(1));
}

TEST_F(SavedTables, AVersionOutOfRangeIsNarrowedWhileTheTablesStayTheSame) {
  save();
  TableStore store = *stores_.tableStore(kInputProgram);
  store.pat.version = store.sdt.version = store.pmt.version = 0x10005;
  stores_.tableStore(kInputProgram) = StoredTables(store);
  const OutputTables tables = save();
  EXPECT_EQ(tables.dvbTables.pat.version, 5);
  EXPECT_EQ(tables.dvbTables.sdt.version, 5);
  EXPECT_EQ(tables.dvbTables.pmt.version, 0x10005);  // handed out as it is stored
  EXPECT_EQ(versionOf(sectionsOf(tables.pmtPackets, kPmtPid).at(0)), 5);
  EXPECT_THAT(fake::logLines(), ElementsAre(kOnePacket, kOnePacket, kOnePacket, kHasToSave));
}

TEST_F(SavedTables, TheRestartCounterOfAnEntryIsLeftAlone) {
  TableStore store;
  store.restartCounter = 3;
  stores_.tableStore(kInputProgram) = StoredTables(store);
  save();
  EXPECT_EQ(stores_.tableStore(kInputProgram)->restartCounter, 3);
}

TEST_F(SavedTables, OtherEntriesAreLeftAlone) {
  TableStore store;
  store.pat = makePat(1, {{1, 2}});
  stores_.tableStore(1201) = StoredTables(store);
  save();
  EXPECT_EQ(*stores_.tableStore(1201), store);
  EXPECT_THAT(stores_.saved(), ElementsAre(Key(1201), Key(kInputProgram)));
}

TEST_F(SavedTables, OfTwoIdenticalRequestsTheSecondMovesNoVersionAndIsWrittenAllTheSame) {
  const OutputTables first = save();
  EXPECT_EQ(save(), first);
  EXPECT_THAT(fake::logLines(), ElementsAre(kOnePacket, kOnePacket, kOnePacket, kHasToSave));
  EXPECT_EQ(stores_.saves(), 2);
}

TEST_F(SavedTables, AStreamMoreMovesTheVersionOfThePmtAlone) {
  save();
  work_.pmt.esList.push_back(makeStream(6, 0x68));
  EXPECT_THAT(versions(), ElementsAre(1, 1, 2));
}

TEST_F(SavedTables, AnotherNameMovesTheVersionOfTheSdtAlone) {
  save();
  work_.identity.serviceName = "Dos HD";
  EXPECT_THAT(versions(), ElementsAre(1, 2, 1));
}

TEST_F(SavedTables, AnotherOutputServiceIdMovesAllVersions) {
  save();
  work_.identity.outputSID = 1202;
  EXPECT_THAT(versions(), ElementsAre(2, 2, 2));
  EXPECT_THAT(stores_.saved(), ElementsAre(Key(kInputProgram)));
}

TEST_F(SavedTables, AFailedWriteIsAnErrorWithoutConsequence) {
  fake::platform().createDirectoryResult = 1;
  const OutputTables tables = save();
  EXPECT_EQ(fake::logLines().back(), kCannotSave);
  EXPECT_EQ(stores_.tableStore(kInputProgram)->pmt, tables.dvbTables.pmt);
  EXPECT_THAT(tables.pmtPackets, SizeIs(1));
  EXPECT_THAT(versions(), ElementsAre(1, 1, 1));
}

TEST_F(SavedTables, AnAbsentProgrammeIsReportedByPatAndPmt) {
  service_.pat = PAT();
  service_.sdt = SDT();
  save();
  EXPECT_THAT(fake::logLines(4), ElementsAre(LogLine{3, "", "ProgramNumber not found."},
                                             LogLine{4, "", "Service not found in STD!!"},
                                             LogLine{3, "", "ProgramNumber not found."}));
}

}  // namespace
}  // namespace tevra::test
