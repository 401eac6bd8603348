#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

#include "cfdb/conflict_free_db.h"
#include "cfdb/stream_filter.h"
#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using testing::ElementsAre;
using testing::IsEmpty;

const std::vector<int32_t> kCarriedTypes = {1, 2, 3, 4, 6, 15, 16, 17, 27, 36};

class ConflictFreePMT : public ConflictFreeDBFixture {
 protected:
  PMT set(const PMT& in) {
    PMT out;
    EXPECT_TRUE(database_.setConflictFreePMT(out, in));
    return out;
  }

  /** A scrambled programme with a stream of every kind that matters here. */
  static PMT scrambledPmt() {
    PMT pmt = makePmt(
        3401, 0x101,
        {makeStream(27, 0x101, {makeCaDescriptor(1, 0x301, "v"), makeDescriptor(0x52, "\x01")}),
         makeStream(0x86, 0x102, {makeCaDescriptor(1, 0x302)}),
         makeStream(6, 0x103, {makeDescriptor(0x6A, "ac3"), makeCaDescriptor(1, 0x301)})});
    pmt.version = 17;
    pmt.currentNext = true;
    pmt.descriptors = {makeCaDescriptor(1, 0x300), makeDescriptor(0x0C, "mux")};
    return pmt;
  }

  /** Its conflict-free form in a fresh database. */
  static PMT conflictFreePmt() {
    PMT pmt =
        makePmt(3401, 101,
                {makeStream(27, 101, {makeCaDescriptor(1, 103, "v"), makeDescriptor(0x52, "\x01")}),
                 makeStream(6, 104, {makeDescriptor(0x6A, "ac3"), makeCaDescriptor(1, 103)})});
    pmt.version = 17;
    pmt.currentNext = true;
    pmt.descriptors = {makeCaDescriptor(1, 102), makeDescriptor(0x0C, "mux")};
    return pmt;
  }

  /** Its output form: no CA descriptor at all. */
  static PMT outputPmt() {
    PMT pmt = makePmt(3401, 101,
                      {makeStream(27, 101, {makeDescriptor(0x52, "\x01")}),
                       makeStream(6, 104, {makeDescriptor(0x6A, "ac3")})});
    pmt.version = 17;
    pmt.currentNext = true;
    pmt.descriptors = {makeDescriptor(0x0C, "mux")};
    return pmt;
  }
};

// Stream filter

TEST(StreamFilter, CarriesTenStreamTypesAndNoOther) {
  for (int32_t type = -256; type <= 512; ++type) {
    const bool expected =
        std::find(kCarriedTypes.begin(), kCarriedTypes.end(), type) != kCarriedTypes.end();
    EXPECT_EQ(isCarriedStreamType(type), expected) << type;
  }
  EXPECT_FALSE(isCarriedStreamType(0x10000 + 27));
  EXPECT_FALSE(isCarriedStreamType(INT32_MIN));
  EXPECT_FALSE(isCarriedStreamType(INT32_MAX));
}

TEST_F(ConflictFreePMT, KeepsEveryCarriedTypeInOrder) {
  PMT input = makePmt(1, 0x1000);
  PMT expected = makePmt(1, 101);
  for (int32_t type = 0; type < 256; ++type) {
    input.esList.push_back(makeStream(type, 0x100 + type));
  }
  int32_t pid = 102;
  for (const int32_t type : kCarriedTypes) {
    expected.esList.push_back(makeStream(type, pid++));
  }
  EXPECT_EQ(set(input), expected);
  EXPECT_EQ(database_.getConflictFreePID(-1), pid);
}

// Setting

TEST_F(ConflictFreePMT, RemapsPcrThenProgrammeDescriptorsThenStreamsWithTheirDescriptors) {
  EXPECT_EQ(set(scrambledPmt()), conflictFreePmt());
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "iDesc PID [00768/0300] oDesc PID [00102/0066]"},
                          LogLine{7, "", "iES  PID [00257/0101] oES  PID [00101/0065]"},
                          LogLine{7, "", "iDesc PID [00769/0301] oDesc PID [00103/0067]"},
                          LogLine{7, "", "iES  PID [00259/0103] oES  PID [00104/0068]"},
                          LogLine{7, "", "iDesc PID [00769/0301] oDesc PID [00103/0067]"},
                          LogLine{7, "", "Guardo PMT en DB local! inputSID [0x0d49]"}));
}

TEST_F(ConflictFreePMT, WithoutStreamsStillRemapsThePcrPid) {
  EXPECT_EQ(set(makePmt(1, 0x1FFF)), makePmt(1, 101));
  EXPECT_EQ(database_.getInputPID(101), 0x1FFF);
  EXPECT_THAT(logLines(), ElementsAre(LogLine{7, "", "Guardo PMT en DB local! inputSID [0x0001]"}));
}

TEST_F(ConflictFreePMT, ReplacesWhatTheOutputHeld) {
  PMT out = scrambledPmt();
  EXPECT_TRUE(database_.setConflictFreePMT(out, makePmt(1, 0x100)));
  EXPECT_EQ(out, makePmt(1, 101));
}

TEST_F(ConflictFreePMT, HoldsThousandsOfStreams) {
  PMT input = makePmt(1, 0);
  PMT expected = makePmt(1, 101);
  for (int32_t i = 0; i < 5000; ++i) {
    input.esList.push_back(makeStream(4, 1 + i));
    expected.esList.push_back(makeStream(4, 102 + i));
  }
  EXPECT_EQ(set(input), expected);
}

// Storing

TEST_F(ConflictFreePMT, IsStoredUnderItsProgrammeNumber) {
  const PMT first = set(makePmt(1, 0x101));
  const PMT second = set(makePmt(2, 0x201));
  PMT stored;
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 1));
  EXPECT_EQ(stored, first);
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 2));
  EXPECT_EQ(stored, second);
  EXPECT_FALSE(database_.getConflictFreePMT(stored, 3));
  EXPECT_EQ(stored, second);
}

TEST_F(ConflictFreePMT, ReplacesItsPredecessor) {
  (void)set(makePmt(1, 0x101, {makeStream(27, 0x101)}));
  const PMT second = set(makePmt(1, 0x102));
  PMT stored;
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 1));
  EXPECT_EQ(stored, second);
}

TEST_F(ConflictFreePMT, IsHandedOutWithItsCaDescriptors) {
  (void)set(scrambledPmt());
  fake::clearLog();
  PMT stored;
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 3401));
  EXPECT_EQ(stored, conflictFreePmt());
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(ConflictFreePMT, AnyProgrammeNumberIsAKey) {
  for (const int32_t number : {0, -1, 0x10001, INT32_MIN, INT32_MAX}) {
    (void)set(makePmt(number, 0x100));
  }
  EXPECT_TRUE(fake::logged(7, "Guardo PMT en DB local! inputSID [0xffffffff]"));
  PMT stored;
  for (const int32_t number : {0, -1, 0x10001, INT32_MIN, INT32_MAX}) {
    EXPECT_TRUE(database_.getConflictFreePMT(stored, number));
    EXPECT_EQ(stored, makePmt(number, 101));
  }
  EXPECT_FALSE(database_.getConflictFreePMT(stored, 1));
}

// Output PMT

TEST_F(ConflictFreePMT, ForAnOutputHasNoCaDescriptorAtAll) {
  (void)set(scrambledPmt());
  fake::clearLog();
  PMT out = makePmt(9, 9, {makeStream(1, 1)});
  EXPECT_TRUE(database_.getOutputPMT(out, 3401));
  EXPECT_EQ(out, outputPmt());
  EXPECT_THAT(logLines(), IsEmpty());
}

TEST_F(ConflictFreePMT, ForAnOutputAllocatesNothing) {
  (void)set(scrambledPmt());
  PMT out;
  EXPECT_TRUE(database_.getOutputPMT(out, 3401));
  EXPECT_EQ(database_.getConflictFreePID(-1), 105);
}

TEST_F(ConflictFreePMT, ForAnOutputLeavesTheStoredOneAlone) {
  (void)set(scrambledPmt());
  PMT out;
  EXPECT_TRUE(database_.getOutputPMT(out, 3401));
  PMT stored;
  EXPECT_TRUE(database_.getConflictFreePMT(stored, 3401));
  EXPECT_EQ(stored, conflictFreePmt());
}

TEST_F(ConflictFreePMT, ForAnUnknownServiceIsMissing) {
  (void)set(scrambledPmt());
  PMT out = makePmt(9, 9);
  EXPECT_FALSE(database_.getOutputPMT(out, 3402));
  EXPECT_EQ(out, makePmt(9, 9));
}

}  // namespace
}  // namespace tevra::test
