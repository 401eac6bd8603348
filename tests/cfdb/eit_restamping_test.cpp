#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "cfdb/conflict_free_db.h"
#include "store/table_store_files.h"
#include "tests/cfdb/conflict_free_db_fixture.h"
#include "tests/support/allocation_hook.h"
#include "tests/support/tables.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using fake::logLines;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr uint64_t kMjd = 60000;

class EitRestamping : public ConflictFreeDBFixture {
 protected:
  EITMap restamp(const EITMap& in) {
    EITMap out;
    EXPECT_TRUE(database_.getConflictFreeEITpf(out, in));
    return out;
  }

  /** The start time that an event at `time` gets. */
  uint64_t restampedTime(uint64_t time) {
    const EITMap out = restamp(mapOf({makeEit(1, 0x4E, 0, {time})}));
    return static_cast<uint64_t>(out.at(1).at(0x4E).events.at(0).startTime);
  }

  static LogLine newVersion(const std::string& eit) {
    return {7, "", kNewVersion + eit + "] version 0 selected"};
  }

  /** Service and table id of those that were new, in order. */
  static std::vector<std::string> newVersions() {
    std::vector<std::string> eits;
    for (const LogLine& line : logLines()) {
      if (line.text.rfind(kNewVersion, 0) == 0) {
        eits.push_back(
            line.text.substr(kNewVersion.size(), line.text.find(']') - kNewVersion.size()));
      }
    }
    return eits;
  }

 private:
  static inline const std::string kNewVersion = "No previous EIT restamped [0x";
};

TEST_F(EitRestamping, ReplacesStartTimesAndTheVersionAndNothingElse) {
  setOffset(60);
  const EITMap in =
      mapOf({makeEit(3401, 0x4E, 17, {dvbTime(kMjd, 12, 30, 0), dvbTime(kMjd, 14, 0, 0)})});
  const EITMap expected =
      mapOf({makeEit(3401, 0x4E, 1, {dvbTime(kMjd, 12, 29, 0), dvbTime(kMjd, 13, 59, 0)})});
  EXPECT_EQ(restamp(in), expected);
}

TEST_F(EitRestamping, LeavesTheInputAlone) {
  setOffset(60);
  const EITMap in = mapOf({makeEit(1, 0x4E, 17, {dvbTime(kMjd, 12, 30, 0)})});
  const EITMap before = in;
  (void)restamp(in);
  EXPECT_EQ(in, before);
}

TEST_F(EitRestamping, TakesAnyStartTime) {
  setOffset(0);
  EXPECT_EQ(restampedTime(0), 0U);
  EXPECT_EQ(restampedTime(std::numeric_limits<uint64_t>::max()),
            ((uint64_t{1} << 40) - 1 + 6) << 24 | 0x234745);
  EXPECT_EQ(restampedTime(uint64_t{1} << 63), uint64_t{1} << 63);
  EXPECT_EQ(restampedTime(kMjd << 24 | 0x256161), dvbTime(kMjd + 1, 2, 2, 1));
  setOffset(1);
  EXPECT_EQ(restampedTime(0), 0U);
}

TEST_F(EitRestamping, ReadsTheOffsetForEveryEit) {
  constexpr size_t kEvents = 1000;
  setOffset(60);
  const std::vector<uint64_t> events(kEvents, dvbTime(kMjd, 12, 30, 0));
  const EITMap in = mapOf({makeEit(1, 0x4E, 0, events), makeEit(2, 0x4E, 0, events)});
  const AllocationHook copyingTheFirst(kEvents * sizeof(EITEvent), [this] { setOffset(120); });
  database_.restampEITpf(in);
  EIT eit;
  ASSERT_TRUE(database_.getRestampedEITpf(eit, 1, 0x4E));
  EXPECT_EQ(static_cast<uint64_t>(eit.events.at(0).startTime), dvbTime(kMjd, 12, 29, 0));
  ASSERT_TRUE(database_.getRestampedEITpf(eit, 2, 0x4E));
  EXPECT_EQ(static_cast<uint64_t>(eit.events.at(0).startTime), dvbTime(kMjd, 12, 28, 0));
}

// Versions

TEST_F(EitRestamping, GoesThroughServicesAndTablesInAscendingOrder) {
  (void)restamp(mapOf({makeEit(300, 0x51, 0), makeEit(20, 0x5F, 0), makeEit(300, 0x50, 0),
                       makeEit(20, 0x4E, 0), makeEit(-1, 0x4E, 0)}));
  EXPECT_THAT(newVersions(),
              ElementsAre("ffffffff/0x4e", "0014/0x4e", "0014/0x5f", "012c/0x50", "012c/0x51"));
}

TEST_F(EitRestamping, ResetsTheRestartCountersOfTheServicesAlsoOfThoseWithoutTables) {
  EITTableVersionStoreFile file;
  for (const int32_t service : {4, 5, 6}) {
    file.versionStores[service].restartCounter = 2;
  }
  ASSERT_EQ(saveEITTableVersionStoreFile(storedEntries(file), 0), 0);
  eitVersions_.restoreEITVersions();
  EITMap in = mapOf({makeEit(4, 0x4E, 0)});
  in[5];
  EXPECT_THAT(restamp(in)[5], IsEmpty());
  eitVersions_.saveEITVersions();
  ASSERT_EQ(loadEITTableVersionStoreFile(file, 0), 0);
  EXPECT_EQ(file.versionStores.at(4).restartCounter, 0);
  EXPECT_EQ(file.versionStores.at(5).restartCounter, 0);
  EXPECT_EQ(file.versionStores.at(6).restartCounter, 3);
}

TEST_F(EitRestamping, GoesByTheKeysOfTheMapNotByTheEitInside) {
  EITMap in;
  in[5][0x50] = makeEit(6, 0x51, 0);
  const EITMap out = restamp(in);
  EITMap expected;
  expected[5][0x50] = makeEit(6, 0x51, 1);
  EXPECT_EQ(out, expected);
  EXPECT_THAT(newVersions(), ElementsAre("0005/0x50"));
  EXPECT_TRUE(fake::logged(7, "restampEIT: SID [0x0006] tid [0x51] v[0] nevents [0]"));
}

// The out map

TEST_F(EitRestamping, EmptiesTheOutMapFirst) {
  EITMap out = mapOf({makeEit(8, 0x4E, 3), makeEit(1, 0x4F, 3)});
  EXPECT_TRUE(database_.getConflictFreeEITpf(out, mapOf({makeEit(1, 0x4E, 0)})));
  EXPECT_EQ(out, mapOf({makeEit(1, 0x4E, 1)}));
  EXPECT_TRUE(database_.getConflictFreeEITsch(out, {}));
  EXPECT_THAT(out, IsEmpty());
}

TEST_F(EitRestamping, HandsOutOnlyWhatWasHandedIn) {
  (void)restamp(mapOf({makeEit(1, 0x4E, 0), makeEit(2, 0x4E, 0)}));
  EXPECT_EQ(restamp(mapOf({makeEit(2, 0x4E, 0)})), mapOf({makeEit(2, 0x4E, 2)}));
}

TEST_F(EitRestamping, NothingInNothingOut) {
  EXPECT_THAT(restamp({}), IsEmpty());
  EXPECT_THAT(logLines(),
              ElementsAre(LogLine{7, "", "[getConflictFreeEITpf] Ready to apply offset [no] [0]"}));
}

TEST_F(EitRestamping, HoldsManyEvents) {
  setOffset(-86400);
  std::vector<uint64_t> events;
  std::vector<uint64_t> expected;
  for (int32_t i = 0; i < 3000; ++i) {
    const auto day = static_cast<uint64_t>(i);
    events.push_back(dvbTime(day, i % 24, i % 60, i % 60));
    expected.push_back(dvbTime(day + 1, i % 24, i % 60, i % 60));
  }
  EXPECT_EQ(restamp(mapOf({makeEit(1, 0x50, 4, events)})), mapOf({makeEit(1, 0x50, 1, expected)}));
}

TEST_F(EitRestamping, StillWorksAfterAClear) {
  const EITMap in = mapOf({makeEit(1, 0x4E, 9)});
  (void)restamp(in);
  database_.clearConflictFreeDB();
  EXPECT_EQ(restamp(in), mapOf({makeEit(1, 0x4E, 2)}));
}

// Log lines

TEST_F(EitRestamping, LogsTheOffsetAndThenEveryEit) {
  setOffset(3600);
  (void)restamp(mapOf({makeEit(3401, 0x4E, 17, {0, 0}), makeEit(3402, 0x4E, 31)}));
  EXPECT_THAT(
      logLines(),
      ElementsAre(LogLine{7, "", "[getConflictFreeEITpf] Ready to apply offset [yes] [3600]"},
                  newVersion("0d49/0x4e"),
                  LogLine{7, "", "restampEIT: SID [0x0d49] tid [0x4e] v[17] nevents [2]"},
                  newVersion("0d4a/0x4e"),
                  LogLine{7, "", "restampEIT: SID [0x0d4a] tid [0x4e] v[31] nevents [0]"}));
}

TEST_F(EitRestamping, LogsAnOffsetOf64Bits) {
  setOffset(-94999999999);
  (void)restamp({});
  EXPECT_THAT(logLines(), ElementsAre(LogLine{7, "",
                                              "[getConflictFreeEITpf] Ready to apply offset [yes] "
                                              "[-94999999999]"}));
}

// The schedule

TEST_F(EitRestamping, TheScheduleIsRestampedLikePresentFollowing) {
  setOffset(60);
  EITMap out;
  EXPECT_TRUE(database_.getConflictFreeEITsch(
      out, mapOf({makeEit(3401, 0x51, 4, {dvbTime(kMjd, 0, 0, 30)}),
                  makeEit(3401, 0x50, 3, {dvbTime(kMjd, 12, 30, 0)})})));
  EXPECT_EQ(out, mapOf({makeEit(3401, 0x50, 1, {dvbTime(kMjd, 12, 29, 0)}),
                        makeEit(3401, 0x51, 1, {dvbTime(kMjd - 1, 23, 59, 30)})}));
  EXPECT_THAT(
      logLines(),
      ElementsAre(LogLine{7, "", "[getConflictFreeEITsch] Ready to apply offset [yes] [60]"},
                  newVersion("0d49/0x50"),
                  LogLine{7, "", "restampEIT: SID [0x0d49] tid [0x50] v[3] nevents [1]"},
                  newVersion("0d49/0x51"),
                  LogLine{7, "", "restampEIT: SID [0x0d49] tid [0x51] v[4] nevents [1]"}));
}

TEST_F(EitRestamping, AllocatesNoPidAndSavesNothing) {
  (void)restamp(mapOf({makeEit(1, 0x4E, 9, {0})}));
  EXPECT_FALSE(fileExists());
  EXPECT_EQ(database_.getConflictFreePID(-1), 101);
}

TEST_F(EitRestamping, GivesOneRestampedEitAtATime) {
  setOffset(60);
  database_.restampEITsch(mapOf({makeEit(1, 0x50, 9), makeEit(1, 0x51, 9), makeEit(2, 0x50, 9)}));
  database_.restampEITsch(mapOf({makeEit(1, 0x50, 9, {dvbTime(kMjd, 12, 30, 0)})}));
  EIT eit;
  ASSERT_TRUE(database_.getRestampedEITsch(eit, 1, 0x50));
  EXPECT_EQ(eit, makeEit(1, 0x50, 2, {dvbTime(kMjd, 12, 29, 0)}));
  ASSERT_TRUE(database_.getRestampedEITsch(eit, 2, 0x50));
  EXPECT_EQ(eit, makeEit(2, 0x50, 1));
}

TEST_F(EitRestamping, KeepsPresentFollowingAndScheduleApart) {
  database_.restampEITpf(mapOf({makeEit(1, 0x4E, 0)}));
  database_.restampEITsch(mapOf({makeEit(1, 0x50, 0)}));
  EIT eit;
  EXPECT_TRUE(database_.getRestampedEITpf(eit, 1, 0x4E));
  EXPECT_TRUE(database_.getRestampedEITsch(eit, 1, 0x50));
  EXPECT_FALSE(database_.getRestampedEITpf(eit, 1, 0x50));
  EXPECT_FALSE(database_.getRestampedEITsch(eit, 1, 0x4E));
}

TEST_F(EitRestamping, LeavesTheOutParameterAloneWhenThereIsNoSuchEit) {
  const EIT untouched = makeEit(9, 0x5F, 30);
  EIT eit = untouched;
  EXPECT_FALSE(database_.getRestampedEITpf(eit, 1, 0x4E));
  database_.restampEITpf(mapOf({makeEit(1, 0x4E, 0)}));
  EXPECT_FALSE(database_.getRestampedEITpf(eit, 1, 0x4F));
  EXPECT_FALSE(database_.getRestampedEITpf(eit, 2, 0x4E));
  EXPECT_EQ(eit, untouched);
}

TEST_F(EitRestamping, NeitherKindIsLeftAfterAClear) {
  database_.restampEITpf(mapOf({makeEit(1, 0x4E, 0)}));
  database_.restampEITsch(mapOf({makeEit(1, 0x50, 0)}));
  database_.clearConflictFreeDB();
  EIT eit;
  EXPECT_FALSE(database_.getRestampedEITpf(eit, 1, 0x4E));
  EXPECT_FALSE(database_.getRestampedEITsch(eit, 1, 0x50));
}

}  // namespace
}  // namespace tevra::test
