#include "tools/report/facts/table_journal.h"

#include <gtest/gtest.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools::report {
namespace {

PAT patOf(int transportStreamId, int version = 0) {
  PAT pat = test::patRecord({{101, 0x100}});
  pat.transportStreamId = transportStreamId;
  pat.version = version;
  return pat;
}

PMT pmtOf(int version) {
  PMT pmt = test::pmtRecord({});
  pmt.version = version;
  return pmt;
}

EIT eitOf(int service, int tableId) {
  EIT eit;
  eit.serviceId = service;
  eit.tableId = tableId;
  return eit;
}

TEST(TableJournal, KeepsTheLastVersionAndHowOftenThereWasANewOne) {
  TableJournal journal;
  journal.add(patOf(1), 1);
  journal.add(pmtOf(4), 1);
  journal.add(pmtOf(5), 2);
  const std::vector<TableFact> facts = journal.facts();
  ASSERT_EQ(2U, facts.size());
  EXPECT_TRUE(SiTable(pmtOf(5)) == facts[1].table);
  EXPECT_EQ(2U, facts[1].sections);
  EXPECT_EQ(2U, facts[1].times);
  EXPECT_EQ(0x100, facts[1].pid);
}

TEST(TableJournal, ListsTablesByKindThenById) {
  TableJournal journal;
  journal.add(eitOf(102, 0x51), 1);
  journal.add(eitOf(102, 0x50), 1);
  journal.add(TOT(), 1);
  journal.add(eitOf(103, 0x4E), 1);
  BAT bat;
  bat.tableId = 0x4A;
  journal.add(bat, 1);
  NIT nit;
  nit.tableId = 0x40;
  journal.add(nit, 1);
  journal.add(test::sdtRecord({}), 1);
  journal.add(CAT(), 1);
  journal.add(patOf(1), 1);
  std::vector<std::string> kinds;
  for (const TableFact& fact : journal.facts()) {
    const TableIdentity identity = identityOf(fact.table);
    kinds.push_back(namesOf(identity.kind).whole + (" " + std::to_string(identity.tableId)) +
                    " on " + std::to_string(fact.pid));
  }
  EXPECT_EQ(
      (std::vector<std::string>{"PAT 0 on 0", "CAT 1 on 1", "SDT 66 on 17", "NIT 64 on 16",
                                "BAT 74 on 17", "TOT 115 on 20", "EIT present/following 78 on 18",
                                "EIT schedule 80 on 18", "EIT schedule 81 on 18"}),
      kinds);
}

TEST(TableJournal, GivesAServicesEitsAlone) {
  TableJournal journal;
  journal.add(eitOf(101, 0x4E), 1);
  journal.add(eitOf(102, 0x50), 1);
  journal.add(eitOf(102, 0x4E), 1);
  EXPECT_EQ(1U, journal.eits(101).size());
  EXPECT_EQ(2U, journal.eits(102).size());
  EXPECT_TRUE(journal.eits(103).empty());
}

TEST(TableJournal, ForgetsPmtsAndEventsWhenAnotherMultiplexBegins) {
  TableJournal journal;
  journal.add(patOf(1), 1);
  journal.add(pmtOf(0), 1);
  journal.add(eitOf(101, 0x4E), 1);
  journal.add(patOf(1, 1), 1);
  EXPECT_NE(nullptr, journal.pmt(101));
  journal.add(patOf(2), 1);
  EXPECT_EQ(nullptr, journal.pmt(101));
  EXPECT_TRUE(journal.eits(101).empty());
}

}  // namespace
}  // namespace tevra::tools::report
