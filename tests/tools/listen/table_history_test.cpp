#include "tools/listen/table_history.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"
#include "tools/listen/table_facts.h"

namespace tevra::tools {
namespace {

using Kind = TableKind;
using testing::IsEmpty;
using testing::SizeIs;

PMT pmtOf(int service, int version = 0) {
  PMT pmt;
  pmt.programNumber = service;
  pmt.version = version;
  return pmt;
}

TEST(TableHistory, ComparesWithTheLastTableOfTheSameIds) {
  TableHistory history;
  EXPECT_FALSE(history.add({Kind::kPmt, pmtOf(1)}).last);
  EXPECT_FALSE(history.add({Kind::kPmt, pmtOf(2)}).last);
  EXPECT_THAT(history.add({Kind::kPmt, pmtOf(1)}).changes, IsEmpty());
  const TableNews news = history.add({Kind::kPmt, pmtOf(1, 7)});
  EXPECT_EQ(SiTable(pmtOf(1)), *news.last);
  EXPECT_THAT(news.changes, SizeIs(1));
  EXPECT_EQ(SiTable(pmtOf(1, 7)), *history.add({Kind::kPmt, pmtOf(1, 8)}).last);
  EXPECT_EQ(2U, history.size());
}

TEST(TableHistory, TellsTablesApartByEveryId) {
  EIT eit;
  eit.tableId = 0x50;
  std::vector<EIT> eits = {eit};
  for (auto id :
       {&EIT::tableId, &EIT::serviceId, &EIT::transportStreamId, &EIT::originalNetworkId}) {
    eits.push_back(eit);
    ++(eits.back().*id);
  }
  TableHistory history;
  for (const EIT& table : eits) {
    EXPECT_FALSE(history.add({Kind::kEitSchedule, table}).last);
  }
  EXPECT_FALSE(history.add({Kind::kEitPresentFollowing, eit}).last);
  SDT actual;
  actual.tableId = 0x42;
  SDT other = actual;
  other.tableId = 0x46;
  EXPECT_FALSE(history.add({Kind::kSdt, actual}).last);
  EXPECT_FALSE(history.add({Kind::kSdt, other}).last);
}

TEST(TableHistory, AStreamHasOnePatWhateverItsId) {
  TableHistory history;
  PAT pat;
  (void)history.add({Kind::kPat, pat});
  pat.transportStreamId = 9;
  EXPECT_THAT(history.add({Kind::kPat, pat}).changes, SizeIs(1));
}

TEST(TableHistory, ForgetsTheTableThatHasNotComeForLongestWhenThereAreTooMany) {
  TableHistory history(2, TableHistory::kMostBytes);
  (void)history.add({Kind::kPmt, pmtOf(1)});
  (void)history.add({Kind::kPmt, pmtOf(2)});
  (void)history.add({Kind::kPmt, pmtOf(1)});
  (void)history.add({Kind::kPmt, pmtOf(3)});
  EXPECT_EQ(2U, history.size());
  EXPECT_TRUE(history.add({Kind::kPmt, pmtOf(1)}).last);
  EXPECT_FALSE(history.add({Kind::kPmt, pmtOf(2)}).last);
}

TEST(TableHistory, ForgetsTablesThatAreTooLarge) {
  const CAT small = test::catRecord({});
  const CAT large = test::catRecord({test::descriptorRecord(1, std::string(10000, 'x'))});
  TableHistory history(TableHistory::kMostTables, memoryOf(large) - 1);
  (void)history.add({Kind::kCat, small});
  EXPECT_TRUE(history.add({Kind::kCat, small}).last);
  EXPECT_TRUE(history.add({Kind::kCat, large}).last);
  EXPECT_EQ(0U, history.size());
  EXPECT_FALSE(history.add({Kind::kCat, small}).last);
  EXPECT_TRUE(history.add({Kind::kCat, small}).last) << "and counts what it keeps aright";
}

}  // namespace
}  // namespace tevra::tools
