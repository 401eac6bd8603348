#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/files.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using fake::platform;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr char kTwoPids[] =
    R"({"1":{"i32":7},"2":{"map":["i32","i32",2,{"256":101,"512":102}]},)"
    R"("3":{"map":["i32","i32",2,{"101":256,"102":512}]},"4":{"i32":101},"5":{"i32":3}})";

class PidRemapFile : public ConflictFreeDBFixture {
 protected:
  /** Stores a PAT of transport stream 7 whose programmes lie on `pids`. */
  static PAT setPat(ConflictFreeDB& database, std::initializer_list<int32_t> pids,
                    int32_t transportStreamId = 7) {
    PAT pat = makePat(transportStreamId, {});
    for (const int32_t pid : pids) {
      pat.programs.emplace_back().pid = pid;
    }
    PAT out;
    EXPECT_TRUE(database.setConflictFreePAT(out, pat));
    return out;
  }
};

// Reading and writing

TEST_F(PidRemapFile, ReadingSetsThePresenceFlagsOfWhatTheFileHolds) {
  writeText(file(), R"({"1":{"i32":7},"5":{"i32":3}})");
  PIDRemap record;
  EXPECT_EQ(readRecordFromFile(file(), record), 0);
  EXPECT_TRUE(record.__isset.transportStreamId);
  EXPECT_FALSE(record.__isset.inputToOutput);
  EXPECT_FALSE(record.__isset.outputToInput);
  EXPECT_FALSE(record.__isset.nextPIDCounter);
  EXPECT_TRUE(record.__isset.moduleSlot);
}

// When it is written

TEST_F(PidRemapFile, IsWrittenByTheFirstPat) {
  EXPECT_FALSE(fileExists());
  EXPECT_EQ(setPat(database_, {0x100, 0x200}).programs.at(0).pid, 101);
  EXPECT_EQ(readText(file()), kTwoPids);
  EXPECT_THAT(logLines(3), IsEmpty());
}

TEST_F(PidRemapFile, LiesInTheConfigurationRootUnderTheChainsNumber) {
  ConflictFreeDB database(3, timeOffset_, eitVersions_);
  setPat(database, {0x100});
  EXPECT_TRUE(std::filesystem::exists(path("PIDRemap3")));
  EXPECT_EQ(std::distance(std::filesystem::directory_iterator(platform().configurationRoot), {}),
            1);
}

TEST_F(PidRemapFile, IsNotWrittenByAPatWhosePidsAreAllKnown) {
  setPat(database_, {0x100, 0x200});
  removeFile();
  setPat(database_, {0x200, 0x100, 0x200});
  EXPECT_FALSE(fileExists());
  setPat(database_, {0x300});
  EXPECT_TRUE(fileExists());
}

TEST_F(PidRemapFile, IsNotWrittenByAPatOfAnotherStreamWithoutProgrammes) {
  setPat(database_, {0x100});
  setPat(database_, {}, 8);
  EXPECT_EQ(saved().transportStreamId, 7);
  EXPECT_EQ(saved().inputToOutput.size(), 1U);
  setPat(database_, {0x100}, 8);
  EXPECT_EQ(saved().transportStreamId, 8);
}

TEST_F(PidRemapFile, IsWrittenByAPmtWithNewPidsOnly) {
  PMT out;
  const PMT pmt = makePmt(1, 0x100, {makeStream(27, 0x101, {makeCaDescriptor(1, 0x102)})});
  EXPECT_TRUE(database_.setConflictFreePMT(out, pmt));
  EXPECT_EQ(saved().inputToOutput,
            (std::map<int32_t, int32_t>{{0x100, 101}, {0x101, 102}, {0x102, 103}}));
  EXPECT_EQ(saved().outputToInput,
            (std::map<int32_t, int32_t>{{101, 0x100}, {102, 0x101}, {103, 0x102}}));
  EXPECT_EQ(saved().nextPIDCounter, 102);
  removeFile();
  EXPECT_TRUE(database_.setConflictFreePMT(out, pmt));
  EXPECT_FALSE(fileExists());
}

class PidRemapFileAfterACat : public PidRemapFile {
 protected:
  PidRemapFileAfterACat() {
    CAT out;
    EXPECT_TRUE(database_.setConflictFreeCAT(out, makeCat({makeCaDescriptor(1, 0x500)})));
  }

  static bool catIsSaved() { return saved().inputToOutput.count(0x500) == 1; }
};

TEST_F(PidRemapFileAfterACat, IsNotWritten) {
  EXPECT_EQ(database_.getInputPID(101), 0x500);
  EXPECT_FALSE(fileExists());
}

TEST_F(PidRemapFileAfterACat, HoldsItsPidsWithTheNextPmt) {
  PMT out;
  EXPECT_TRUE(database_.setConflictFreePMT(out, makePmt(1, 0x500)));
  EXPECT_TRUE(catIsSaved());
}

TEST_F(PidRemapFile, HoldsThePidsOfACatWithTheNextOutputPmt) {
  PMT out;
  EXPECT_TRUE(database_.setConflictFreePMT(out, makePmt(1, 0x100)));
  CAT cat;
  EXPECT_TRUE(database_.setConflictFreeCAT(cat, makeCat({makeCaDescriptor(1, 0x500)})));
  EXPECT_EQ(saved().inputToOutput.count(0x500), 0U);
  EXPECT_TRUE(database_.getOutputPMT(out, 1));
  EXPECT_EQ(saved().inputToOutput.count(0x500), 1U);
}

TEST_F(PidRemapFileAfterACat, HoldsItsPidsWithTheNextOutputPmtEvenAMissingOne) {
  PMT out;
  EXPECT_FALSE(database_.getOutputPMT(out, 1));
  EXPECT_TRUE(catIsSaved());
  removeFile();
  EXPECT_FALSE(database_.getOutputPMT(out, 1));
  EXPECT_FALSE(fileExists());
}

TEST_F(PidRemapFileAfterACat, HoldsTheRestartedMappingWithAPatOfAnotherStream) {
  // The restart forgets the CAT's PID, and what was unsaved is saved all the same.
  setPat(database_, {});
  PIDRemap restarted;
  restarted.transportStreamId = 7;
  restarted.nextPIDCounter = 99;
  restarted.moduleSlot = 3;
  EXPECT_EQ(saved(), restarted);
}

TEST_F(PidRemapFileAfterACat, IsNotWrittenByTheOtherTables) {
  TOT tot;
  NIT nit;
  BAT bat;
  EIT eit;
  EXPECT_TRUE(database_.setConflictFreeSDT(SDT()));
  EXPECT_TRUE(database_.setConflictFreeTOT(tot, TOT()));
  EXPECT_TRUE(database_.setConflictFreeNIT(nit, NIT()));
  EXPECT_TRUE(database_.setConflictFreeBAT(bat, BAT()));
  EXPECT_TRUE(database_.setConflictFreeEIT(eit, EIT()));
  PAT pat;
  PMT pmt;
  EXPECT_FALSE(database_.getConflictFreePAT(pat));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 1));
  database_.clearConflictFreeDB();
  EXPECT_FALSE(fileExists());
}

// When it is read

TEST_F(PidRemapFile, KeepsThePidsAcrossARestart) {
  setPat(database_, {0x100, 0x200});
  fake::clearLog();
  ConflictFreeDB restarted(0, timeOffset_, eitVersions_);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [3] PID poll [100/299]"}));
  EXPECT_EQ(restarted.getInputPID(102), 0x200);
  EXPECT_EQ(setPat(restarted, {0x200, 0x300, 0x100}).programs.at(0).pid, 102);
  EXPECT_EQ(restarted.getConflictFreePID(0x300), 103);
  EXPECT_EQ(restarted.getConflictFreePID(0x100), 101);
}

TEST_F(PidRemapFile, ThatWasReadIsNotUnsaved) {
  setPat(database_, {0x100});
  ConflictFreeDB restarted(0, timeOffset_, eitVersions_);
  removeFile();
  setPat(restarted, {0x100});
  EXPECT_FALSE(fileExists());
}

TEST_F(PidRemapFile, RestartsTheMappingWhenTheStreamChangedMeanwhile) {
  setPat(database_, {0x100, 0x200});
  ConflictFreeDB restarted(0, timeOffset_, eitVersions_);
  EXPECT_EQ(setPat(restarted, {0x200}, 8).programs.at(0).pid, 101);
  EXPECT_EQ(restarted.getInputPID(102), kUnknownPid);
}

TEST_F(PidRemapFile, OfAnotherChainIsNotRead) {
  setPat(database_, {0x100});
  ConflictFreeDB other(1, timeOffset_, eitVersions_);
  EXPECT_EQ(other.getInputPID(101), kUnknownPid);
  EXPECT_EQ(other.getConflictFreePID(0x100), 301);
}

TEST_F(PidRemapFile, OfAnotherSlotIsIgnoredSilentlyAndOverwrittenByTheNextChange) {
  setPat(database_, {0x100, 0x200});
  const std::string before = readText(file());
  platform().moduleSlot = 4;
  fake::clearLog();
  ConflictFreeDB moved(0, timeOffset_, eitVersions_);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [4] PID poll [900/1099]"}));
  EXPECT_EQ(moved.getInputPID(101), kUnknownPid);
  EXPECT_EQ(readText(file()), before);
  EXPECT_EQ(setPat(moved, {0x200}).programs.at(0).pid, 901);
  EXPECT_EQ(saved().moduleSlot, 4);
  EXPECT_EQ(saved().inputToOutput, (std::map<int32_t, int32_t>{{0x200, 901}}));
}

TEST_F(PidRemapFile, OfAnotherModuleTypeIsTakenWhateverItsPool) {
  ConflictFreeDB database(3, timeOffset_, eitVersions_);
  EXPECT_EQ(setPat(database, {0x100}).programs.at(0).pid, 701);
  platform().moduleType = 0;
  fake::clearLog();
  ConflictFreeDB restarted(3, timeOffset_, eitVersions_);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [3] PID poll [1300/1699]"}));
  EXPECT_EQ(restarted.getConflictFreePID(0x100), 701);
  EXPECT_EQ(restarted.getConflictFreePID(0x200), 702);
}

// Failed saves

TEST_F(PidRemapFile, ThatCannotBeSavedIsTriedAgainOnlyAfterTheNextNewPid) {
  const LogLine failure{3, "", "[ModChain0] Could not save conflict free database to disk"};
  std::filesystem::create_directory(file());
  EXPECT_EQ(setPat(database_, {0x100}).programs.at(0).pid, 101);
  EXPECT_THAT(
      logLines(),
      ElementsAre(
          LogLine{7, "", "Guardo PAT en DB local!"}, failure,
          LogLine{7, "", "[ModChain0] Reason: cannot open " + file() + ": Is a directory"}));
  removeFile();
  fake::clearLog();
  setPat(database_, {0x100});
  EXPECT_FALSE(fileExists());
  EXPECT_THAT(logLines(3), IsEmpty());
  setPat(database_, {0x100, 0x200});
  EXPECT_EQ(readText(file()), kTwoPids);
}

TEST_F(PidRemapFile, FailsWithEveryChangeWhileTheConfigurationRootIsMissing) {
  std::filesystem::remove(platform().configurationRoot);
  ConflictFreeDB database(3, timeOffset_, eitVersions_);
  fake::clearLog();
  setPat(database, {0x100});
  setPat(database, {0x100});
  PMT out;
  EXPECT_TRUE(database.setConflictFreePMT(out, makePmt(1, 0x200)));
  const LogLine failure{3, "", "[ModChain3] Could not save conflict free database to disk"};
  EXPECT_THAT(logLines(3), ElementsAre(failure, failure));
  EXPECT_EQ(out.pcrPid, 702);
  EXPECT_FALSE(std::filesystem::exists(platform().configurationRoot));
}

}  // namespace
}  // namespace tevra::test
