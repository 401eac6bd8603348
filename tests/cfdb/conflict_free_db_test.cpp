#include "cfdb/conflict_free_db.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::IsEmpty;

using ConflictFreeDBTest = ConflictFreeDBFixture;

TEST_F(ConflictFreeDBTest, StartsWithThePoolLineAndNothingElse) {
  const ConflictFreeDB database(2, timeOffset_, eitVersions_);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{4, "", "IN mod slot [3] PID poll [500/699]"}));
}

// What holds for PAT, SDT, CAT and TOT alike

/** A table of the kind, its form in a fresh database, and what storing it logs. */
template <class Table>
struct Kind;

template <>
struct Kind<PAT> {
  static bool set(ConflictFreeDB& db, PAT& out, const PAT& in) {
    return db.setConflictFreePAT(out, in);
  }
  static bool get(ConflictFreeDB& db, PAT& out) { return db.getConflictFreePAT(out); }
  static PAT pat(int32_t network, int32_t first, int32_t second) {
    PAT pat = makePat(7, {{0, network}, {3401, first}, {3402, second}, {3403, first}});
    pat.version = 31;
    pat.currentNext = true;
    return pat;
  }
  static PAT input() { return pat(0x10, 0x100, 0x200); }
  static PAT conflictFree() { return pat(101, 102, 103); }
  static std::vector<std::string> lines() { return {"Guardo PAT en DB local!"}; }
};

template <>
struct Kind<SDT> {
  static bool set(ConflictFreeDB& db, SDT& out, const SDT& in) {
    out = in;  // it is stored unchanged and not handed out
    return db.setConflictFreeSDT(in);
  }
  static bool get(ConflictFreeDB& db, SDT& out) { return db.getConflictFreeSDT(out); }
  static SDT input() {
    SDT sdt = makeSdt({makeService(
        3401, {makeDescriptor(0x48, std::string("\x01\0\0", 3)), makeCaDescriptor(1, 0x100)})});
    sdt.transportStreamId = 7;
    sdt.version = 31;
    sdt.originalNetworkId = 0x20;
    sdt.services[0].eitSchedule = true;
    sdt.services[0].runningStatus = 4;
    sdt.services[0].freeCA = true;
    return sdt;
  }
  static SDT conflictFree() { return input(); }
  static std::vector<std::string> lines() { return {"Guardo SDT en DB local!"}; }
};

template <>
struct Kind<CAT> {
  static bool set(ConflictFreeDB& db, CAT& out, const CAT& in) {
    return db.setConflictFreeCAT(out, in);
  }
  static bool get(ConflictFreeDB& db, CAT& out) { return db.getConflictFreeCAT(out); }
  static CAT cat(uint16_t first, uint16_t second) {
    CAT cat = makeCat({makeCaDescriptor(0x0B00, first, "emm"), makeDescriptor(0x52, "a"),
                       makeCaDescriptor(0x1801, second)});
    cat.version = 9;
    cat.currentNext = true;
    return cat;
  }
  static CAT input() { return cat(0x500, 0x501); }
  static CAT conflictFree() { return cat(101, 102); }
  static std::vector<std::string> lines() {
    return {"iDesc PID [01280/0500] oDesc PID [00101/0065]",
            "iDesc PID [01281/0501] oDesc PID [00102/0066]", "Guardo CAT en DB local!"};
  }
};

template <>
struct Kind<TOT> {
  static bool set(ConflictFreeDB& db, TOT& out, const TOT& in) {
    return db.setConflictFreeTOT(out, in);
  }
  static bool get(ConflictFreeDB& db, TOT& out) { return db.getConflictFreeTOT(out); }
  static TOT input() {
    TOT tot = makeTot(dvbTime(60000, 12, 0, 0));
    tot.descriptors = {makeDescriptor(0x58, "ITA"), makeCaDescriptor(1, 0x100)};
    return tot;
  }
  static TOT conflictFree() { return input(); }
  static std::vector<std::string> lines() { return {"Guardo TOT en DB local!"}; }
};

template <class Table>
class EveryKind : public ConflictFreeDBFixture {
 protected:
  bool set(const Table& in) { return Kind<Table>::set(database_, out_, in); }
  bool get() { return Kind<Table>::get(database_, out_); }

  Table out_;
};

using Kinds = testing::Types<PAT, SDT, CAT, TOT>;
TYPED_TEST_SUITE(EveryKind, Kinds, );  // the comma: a variadic macro wants an argument

TYPED_TEST(EveryKind, IsMissingAtFirstAndLeavesTheOutputAlone) {
  this->out_ = Kind<TypeParam>::input();
  EXPECT_FALSE(this->get());
  EXPECT_EQ(this->out_, Kind<TypeParam>::input());
  EXPECT_THAT(logLines(), IsEmpty());
}

TYPED_TEST(EveryKind, IsHandedOutAndKeptWithEverythingButItsPids) {
  EXPECT_TRUE(this->set(Kind<TypeParam>::input()));
  EXPECT_EQ(this->out_, Kind<TypeParam>::conflictFree());
  std::vector<LogLine> lines;
  for (const std::string& text : Kind<TypeParam>::lines()) {
    lines.push_back({7, "", text});
  }
  EXPECT_THAT(logLines(), ElementsAreArray(lines));
  this->out_ = TypeParam();
  EXPECT_TRUE(this->get());
  EXPECT_EQ(this->out_, Kind<TypeParam>::conflictFree());
}

TYPED_TEST(EveryKind, ReplacesItsPredecessorAndWhatTheOutputHeld) {
  EXPECT_TRUE(this->set(Kind<TypeParam>::input()));
  EXPECT_TRUE(this->set(TypeParam()));
  EXPECT_EQ(this->out_, TypeParam());
  this->out_ = Kind<TypeParam>::input();
  EXPECT_TRUE(this->get());
  EXPECT_EQ(this->out_, TypeParam());
}

TYPED_TEST(EveryKind, IsClearedSilentlyUnlessItIsTheTot) {
  EXPECT_TRUE(this->set(Kind<TypeParam>::input()));
  fake::clearLog();
  this->database_.clearConflictFreeDB();
  EXPECT_THAT(logLines(), IsEmpty());
  EXPECT_EQ(this->get(), (std::is_same_v<TypeParam, TOT>));
  EXPECT_EQ(this->out_, Kind<TypeParam>::conflictFree());
}

// PIDs

TEST_F(ConflictFreeDBTest, DescriptorsOfSdtAndTotGetNoPid) {
  TOT tot;
  EXPECT_TRUE(database_.setConflictFreeSDT(Kind<SDT>::input()));
  EXPECT_TRUE(database_.setConflictFreeTOT(tot, Kind<TOT>::input()));
  EXPECT_EQ(database_.getConflictFreePID(-1), 101);
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
  EXPECT_TRUE(database_.setConflictFreePAT(pat, makePat(7, {{1, 0x100}})));
  EXPECT_TRUE(database_.setConflictFreePMT(
      pmt, makePmt(1, 0x100, {makeStream(27, 0x100, {makeCaDescriptor(1, 0x300)})})));
  EXPECT_TRUE(database_.setConflictFreeCAT(cat, makeCat({makeCaDescriptor(1, 0x300)})));
  EXPECT_EQ(pmt, makePmt(1, 101, {makeStream(27, 101, {makeCaDescriptor(1, 102)})}));
  EXPECT_THAT(cat.descriptors, ElementsAre(makeCaDescriptor(1, 102)));
  EXPECT_EQ(database_.getConflictFreePID(0x300), 102);
}

// What is not implemented on purpose

/** `call` says so and no more, returns `result`, and leaves its output alone. */
template <class Table, class Call>
void expectNotImplemented(const std::string& name, bool result, Call call) {
  Table out;
  out.version = 5;
  const Table before = out;
  fake::clearLog();
  EXPECT_EQ(call(out), result) << name;
  EXPECT_EQ(out, before) << name;
  EXPECT_THAT(logLines(), ElementsAre(LogLine{3, "", "[" + name + "] Not implemented!"}));
}

TEST_F(ConflictFreeDBTest, NitBatAndASingleEitAreTakenButNotKept) {
  auto& db = database_;
  expectNotImplemented<NIT>("setConflictFreeNIT", true,
                            [&](NIT& out) { return db.setConflictFreeNIT(out, NIT()); });
  expectNotImplemented<BAT>("setConflictFreeBAT", true,
                            [&](BAT& out) { return db.setConflictFreeBAT(out, BAT()); });
  expectNotImplemented<EIT>("setConflictFreeEIT", true,
                            [&](EIT& out) { return db.setConflictFreeEIT(out, EIT()); });
  expectNotImplemented<NIT>("getConflictFreeNIT", false,
                            [&](NIT& out) { return db.getConflictFreeNIT(out); });
  expectNotImplemented<BAT>("getConflictFreeBAT", false,
                            [&](BAT& out) { return db.getConflictFreeBAT(out); });
}

// Clearing

TEST_F(ConflictFreeDBTest, ClearEmptiesThePmts) {
  PMT pmt;
  EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(1, 0x101)));
  EXPECT_TRUE(database_.setConflictFreePMT(pmt, makePmt(2, 0x201)));
  database_.clearConflictFreeDB();
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 1));
  EXPECT_FALSE(database_.getConflictFreePMT(pmt, 2));
  EXPECT_FALSE(database_.getOutputPMT(pmt, 1));
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
}  // namespace tevra::test
