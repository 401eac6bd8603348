#include "synth/table_comparison.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <string>

#include "tests/synth/builders.h"

namespace tevra::test {
namespace {

template <class Table>
struct Change {
  std::string what;
  std::function<void(Table&)> apply;
};

template <class Table>
using Changes = std::vector<Change<Table>>;

/** Each change alone, in both directions. */
template <class Table>
void expectEach(const Changes<Table>& changes, const Table& table,
                bool (*changed)(const Table&, const Table&), bool expected) {
  EXPECT_FALSE(changed(table, table));
  for (const Change<Table>& change : changes) {
    Table other = table;
    change.apply(other);
    EXPECT_EQ(changed(table, other), expected) << change.what;
    EXPECT_EQ(changed(other, table), expected) << change.what;
  }
}

PAT somePat() {
  PAT pat = makePat(7, {{1, 100}, {2, 200}});
  pat.version = 5;
  return pat;
}

SDT someSdt() {
  SDT sdt = makeSdt(
      {makeService(1, {makeDescriptor(0x48, "abc"), makeDescriptor(0x49, "ES")}), makeService(2)});
  sdt.version = 5;
  return sdt;
}

PMT somePmt() {
  PMT pmt = makePmt(1, 100, {makeStream(2, 101), makeStream(4, 102, {makeDescriptor(0x0A, "s")})});
  pmt.descriptors = {makeDescriptor(0x0E, "abc"), makeDescriptor(0x52, "x")};
  return pmt;
}

TEST(TableComparison, EveryMemberOfAPatButItsVersionAndFlagCounts) {
  expectEach<PAT>({{"id", [](PAT& pat) { pat.transportStreamId = 8; }},
                   {"fewer", [](PAT& pat) { pat.programs.pop_back(); }},
                   {"none", [](PAT& pat) { pat.programs.clear(); }},
                   {"more", [](PAT& pat) { pat.programs.push_back(pat.programs[0]); }},
                   {"number", [](PAT& pat) { pat.programs[1].programNumber = 3; }},
                   {"PID", [](PAT& pat) { pat.programs[1].pid = 201; }},
                   {"order", [](PAT& pat) { std::swap(pat.programs[0], pat.programs[1]); }}},
                  somePat(), patChanged, true);
  expectEach<PAT>({{"version", [](PAT& pat) { pat.version = 6; }},
                   {"flag", [](PAT& pat) { pat.currentNext = !pat.currentNext; }},
                   {"is-set", [](PAT& pat) { pat.__isset.programs = true; }}},
                  somePat(), patChanged, false);
}

TEST(TableComparison, EveryMemberOfAnSdtButItsVersionAndFlagCounts) {
  expectEach<SDT>({{"table id", [](SDT& sdt) { sdt.tableId = 0x46; }},
                   {"id", [](SDT& sdt) { sdt.transportStreamId = 9; }},
                   {"network", [](SDT& sdt) { sdt.originalNetworkId = 9; }},
                   {"fewer", [](SDT& sdt) { sdt.services.pop_back(); }},
                   {"more", [](SDT& sdt) { sdt.services.push_back(makeService(3)); }},
                   {"order", [](SDT& sdt) { std::swap(sdt.services[0], sdt.services[1]); }}},
                  someSdt(), sdtChanged, true);
  expectEach<SDT>({{"version", [](SDT& sdt) { sdt.version = 6; }},
                   {"flag", [](SDT& sdt) { sdt.currentNext = !sdt.currentNext; }}},
                  someSdt(), sdtChanged, false);
}

TEST(TableComparison, EveryMemberOfAServiceCounts) {
  expectEach<SDT>(
      {{"id", [](SDT& sdt) { sdt.services[1].serviceId = 3; }},
       {"schedule", [](SDT& sdt) { sdt.services[1].eitSchedule = true; }},
       {"present/following", [](SDT& sdt) { sdt.services[1].eitPresentFollowing = true; }},
       {"running", [](SDT& sdt) { sdt.services[1].runningStatus = 4; }},
       {"free CA", [](SDT& sdt) { sdt.services[1].freeCA = true; }},
       {"descriptors", [](SDT& sdt) { sdt.services[0].descriptors.pop_back(); }},
       {"tag", [](SDT& sdt) { sdt.services[0].descriptors[1].tag = 0x4A; }},
       {"bytes", [](SDT& sdt) { sdt.services[0].descriptors[1].data = "FR"; }},
       {"length", [](SDT& sdt) { sdt.services[0].descriptors[1].data += '\0'; }}},
      someSdt(), sdtChanged, true);
}

TEST(TableComparison, EveryMemberOfAPmtButItsVersionAndFlagCounts) {
  expectEach<PMT>({{"number", [](PMT& pmt) { pmt.programNumber = 2; }},
                   {"PCR", [](PMT& pmt) { pmt.pcrPid = 101; }},
                   {"descriptors", [](PMT& pmt) { pmt.descriptors.pop_back(); }},
                   {"tag", [](PMT& pmt) { pmt.descriptors[1].tag = 0x53; }},
                   {"bytes", [](PMT& pmt) { pmt.descriptors[1].data = "y"; }},
                   {"length", [](PMT& pmt) { pmt.descriptors[1].data += '\0'; }},
                   {"order", [](PMT& pmt) { std::swap(pmt.descriptors[0], pmt.descriptors[1]); }},
                   {"fewer", [](PMT& pmt) { pmt.esList.pop_back(); }},
                   {"more", [](PMT& pmt) { pmt.esList.push_back(makeStream(6, 103)); }},
                   {"streams", [](PMT& pmt) { std::swap(pmt.esList[0], pmt.esList[1]); }},
                   {"type", [](PMT& pmt) { pmt.esList[0].streamType = 0x1B; }},
                   {"PID", [](PMT& pmt) { pmt.esList[0].pid = 104; }},
                   {"of stream", [](PMT& pmt) { pmt.esList[1].descriptors.clear(); }},
                   {"its tag", [](PMT& pmt) { pmt.esList[1].descriptors[0].tag = 0x0B; }},
                   {"its bytes", [](PMT& pmt) { pmt.esList[1].descriptors[0].data = "e"; }}},
                  somePmt(), pmtChanged, true);
  expectEach<PMT>({{"version", [](PMT& pmt) { pmt.version = 6; }},
                   {"flag", [](PMT& pmt) { pmt.currentNext = !pmt.currentNext; }}},
                  somePmt(), pmtChanged, false);
}

TEST(TableComparison, VersionsMoveByOneModulo32) {
  for (int32_t version = 0; version < 31; ++version) {
    EXPECT_EQ(nextVersion(version), version + 1);
  }
  EXPECT_EQ(nextVersion(31), 0);
}

TEST(TableComparison, AnyStoredVersionLeadsBackIntoRange) {
  EXPECT_EQ(nextVersion(32), 1);
  EXPECT_EQ(nextVersion(300), 13);
  EXPECT_EQ(nextVersion(-1), 0);
  EXPECT_EQ(nextVersion(std::numeric_limits<int32_t>::max()), 0);
  EXPECT_EQ(nextVersion(std::numeric_limits<int32_t>::min()), 1);
}

}  // namespace
}  // namespace tevra::test
