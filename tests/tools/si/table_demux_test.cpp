#include "tools/si/table_demux.h"

#include <gtest/gtest.h>

#include "tests/tools/support/table_brief.h"
#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Briefs;
using test::Bytes;
using test::makeEit;
using test::makePat;
using test::makePmt;
using test::makeSection;

class TableDemuxTest : public testing::Test {
 protected:
  /** Sends a section and returns the tables that come of it. */
  Briefs send(int pid, const Bytes& section) {
    tables_.clear();
    for (const TsPacket& packet : writer_.section(pid, section)) {
      demux_.push(packet);
    }
    return tables_;
  }

  test::PacketWriter writer_;
  Briefs tables_;
  TableDemux demux_{
      [this](const SiTable& table, size_t /*sections*/) { tables_.push_back(test::brief(table)); }};
};

const Bytes kNitPayload = test::joined({test::loop(0xF, {}), test::loop(0xF, {})});

TEST_F(TableDemuxTest, HandsOnEveryTableOfTheActualTransportStream) {
  EXPECT_EQ(Briefs{"PAT 1 v2"}, send(0x00, makePat(1, 2, {{101, 0x100}})));
  EXPECT_EQ(Briefs{"CAT v3"}, send(0x01, makeSection({0x01, 0xFFFF, 3}, {})));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  EXPECT_EQ(Briefs{"NIT 8 v5"}, send(0x10, makeSection({0x40, 8, 5}, kNitPayload)));
  EXPECT_EQ(Briefs{"SDT 1 v6"}, send(0x11, test::makeSdt(1, 6, 101, "One")));
  EXPECT_EQ(Briefs{"BAT 9 v7"}, send(0x11, makeSection({0x4A, 9, 7}, kNitPayload)));
  EXPECT_EQ(Briefs{"EIT 101/0x4E v8"}, send(0x12, makeEit({0x4E, 101, 8}, 0, {1})));
  EXPECT_EQ(Briefs{"EIT 101/0x5F v9"}, send(0x12, makeEit({0x5F, 101, 9}, 0, {1})));
  EXPECT_EQ(Briefs{"TOT 77"}, send(0x14, test::makeTot(77)));
}

TEST_F(TableDemuxTest, PassesOverTablesOfOtherStreamsAndTheTdt) {
  EXPECT_EQ(Briefs{}, send(0x10, makeSection({0x41, 8, 5}, kNitPayload)));
  EXPECT_EQ(Briefs{}, send(0x11, makeSection({0x46, 1, 6}, {0, 1, 0xFF})));
  EXPECT_EQ(Briefs{}, send(0x12, makeSection({0x4F, 1, 6}, Bytes(6, 0))));
  EXPECT_EQ(Briefs{}, send(0x12, makeSection({0x60, 1, 6}, Bytes(6, 0))));
  EXPECT_EQ(Briefs{}, send(0x14, {0x70, 0x70, 0x05, 0xEC, 0x1F, 0x23, 0x59, 0x59}));
}

TEST_F(TableDemuxTest, PassesOverTablesOnAPidThatIsNotTheirs) {
  EXPECT_EQ(Briefs{}, send(0x10, makePat(1, 2, {})));
  EXPECT_EQ(Briefs{}, send(0x12, makeSection({0x01, 0, 3}, {})));
  EXPECT_EQ(Briefs{}, send(0x11, makeSection({0x40, 8, 5}, kNitPayload)));
  EXPECT_EQ(Briefs{}, send(0x10, test::makeSdt(1, 6, 101, "One")));
  EXPECT_EQ(Briefs{}, send(0x00, makeEit({0x4E, 101, 8}, 0, {})));
  EXPECT_EQ(Briefs{}, send(0x10, test::makeTot(77)));
}

TEST_F(TableDemuxTest, HandsOnEachNewVersionOnce) {
  EXPECT_EQ(Briefs{"SDT 1 v6"}, send(0x11, test::makeSdt(1, 6, 101, "One")));
  EXPECT_EQ(Briefs{}, send(0x11, test::makeSdt(1, 6, 101, "One")));
  EXPECT_EQ(Briefs{"SDT 1 v7"}, send(0x11, test::makeSdt(1, 7, 101, "Uno")));
  EXPECT_EQ(Briefs{}, send(0x11, test::makeSdt(1, 7, 101, "Uno")));
}

TEST_F(TableDemuxTest, HandsOnEveryTot) {
  EXPECT_EQ(Briefs{"TOT 77"}, send(0x14, test::makeTot(77)));
  EXPECT_EQ(Briefs{"TOT 77"}, send(0x14, test::makeTot(77)));
}

TEST_F(TableDemuxTest, WaitsForAllSections) {
  EXPECT_EQ(Briefs{}, send(0x11, test::makeSdt(1, 6, 101, "One", 0, 1)));
  ASSERT_EQ(1U, demux_.incompleteTables().size());
  EXPECT_EQ(0x42, demux_.incompleteTables()[0].tableId);
  EXPECT_EQ(1U, demux_.incompleteTables()[0].sections);
  EXPECT_EQ(Briefs{"SDT 1 v6"}, send(0x11, test::makeSdt(1, 6, 102, "Two", 1, 1)));
  EXPECT_TRUE(demux_.incompleteTables().empty());
}

TEST_F(TableDemuxTest, SkipsSectionsWithAWrongCrc) {
  Bytes broken = makePat(1, 2, {{101, 0x100}});
  broken[10] ^= 0x20;
  EXPECT_EQ(Briefs{}, send(0x00, broken));
  EXPECT_EQ(1U, sumOf(demux_.faults()).crcErrors);
  EXPECT_EQ(Briefs{"PAT 1 v2"}, send(0x00, makePat(1, 2, {{101, 0x100}})));
}

TEST_F(TableDemuxTest, PassesOverTablesThatAreNotYetApplicable) {
  EXPECT_EQ(Briefs{}, send(0x01, makeSection({0x01, 0, 3, 0, 0, false}, {})));
  EXPECT_EQ(Briefs{"CAT v3"}, send(0x01, makeSection({0x01, 0, 3}, {})));
}

TEST_F(TableDemuxTest, ReadsAPmtOnlyOnceThePatHasNamedIt) {
  EXPECT_EQ(Briefs{}, send(0x100, makePmt(101, 4, 0x101, {})));
  EXPECT_EQ(Briefs{"PAT 1 v2"}, send(0x00, makePat(1, 2, {{101, 0x100}})));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  EXPECT_EQ(Briefs{}, send(0x100, makePmt(102, 4, 0x101, {}))) << "a programme of another PID";
}

TEST_F(TableDemuxTest, ReadsSeveralProgrammesOnOnePid) {
  (void)send(0x00, makePat(1, 2, {{101, 0x100}, {102, 0x100}}));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  EXPECT_EQ(Briefs{"PMT 102 v4"}, send(0x100, makePmt(102, 4, 0x101, {})));
  EXPECT_EQ(Briefs{}, send(0x100, makePmt(101, 4, 0x101, {})));
}

TEST_F(TableDemuxTest, FollowsAPmtToAnotherPid) {
  (void)send(0x00, makePat(1, 2, {{101, 0x100}}));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  (void)send(0x00, makePat(1, 3, {{101, 0x200}}));
  EXPECT_EQ(Briefs{}, send(0x100, makePmt(101, 5, 0x101, {}))) << "the old PID";
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x200, makePmt(101, 4, 0x101, {})));
}

TEST_F(TableDemuxTest, DoesNotRepeatAPmtThatANewPatStillNames) {
  (void)send(0x00, makePat(1, 2, {{101, 0x100}}));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  (void)send(0x00, makePat(1, 3, {{101, 0x100}, {102, 0x200}}));
  EXPECT_EQ(Briefs{}, send(0x100, makePmt(101, 4, 0x101, {})));
}

TEST_F(TableDemuxTest, TakesTheNetworkPidOfThePatForNoProgramme) {
  (void)send(0x00, makePat(1, 2, {{0, 0x10}}));
  EXPECT_EQ(Briefs{}, send(0x10, makePmt(0, 1, 0x101, {})));
}

TEST_F(TableDemuxTest, HandsEverythingOnAgainForAnotherTransportStream) {
  EXPECT_EQ(Briefs{"SDT 1 v6"}, send(0x11, test::makeSdt(1, 6, 101, "One")));
  (void)send(0x00, makePat(1, 2, {{101, 0x100}}));
  EXPECT_EQ(Briefs{}, send(0x11, test::makeSdt(1, 6, 101, "One")))
      << "the first PAT forgets nothing";
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
  EXPECT_EQ(Briefs{"PAT 2 v2"}, send(0x00, makePat(2, 2, {{101, 0x100}})));
  EXPECT_EQ(Briefs{}, send(0x00, makePat(2, 2, {{101, 0x100}})));
  EXPECT_EQ(Briefs{"SDT 1 v6"}, send(0x11, test::makeSdt(1, 6, 101, "One")));
  EXPECT_EQ(Briefs{"PMT 101 v4"}, send(0x100, makePmt(101, 4, 0x101, {})));
}

TEST_F(TableDemuxTest, HandsOnAScheduleWithGapsInItsSectionNumbers) {
  EXPECT_EQ(Briefs{}, send(0x12, makeEit({0x50, 101, 3, 0, 17}, 0, {1})));
  EXPECT_EQ(Briefs{}, send(0x12, makeEit({0x50, 101, 3, 8, 17}, 8, {2})));
  EXPECT_EQ(Briefs{}, send(0x12, makeEit({0x50, 101, 3, 16, 17}, 17, {3})));
  EXPECT_EQ(Briefs{"EIT 101/0x50 v3"}, send(0x12, makeEit({0x50, 101, 3, 17, 17}, 17, {4})));
}

TEST_F(TableDemuxTest, KeepsServicesAndTablesOfTheEitApart) {
  EXPECT_EQ(Briefs{}, send(0x12, makeEit({0x4E, 101, 3, 0, 1}, 1, {1})));
  EXPECT_EQ(Briefs{}, send(0x12, makeEit({0x4E, 102, 3, 1, 1}, 1, {1})));
  EXPECT_EQ(Briefs{"EIT 101/0x50 v3"}, send(0x12, makeEit({0x50, 101, 3}, 0, {1})));
  EXPECT_EQ(Briefs{"EIT 101/0x4E v3"}, send(0x12, makeEit({0x4E, 101, 3, 1, 1}, 1, {1})));
  EXPECT_EQ(1U, demux_.incompleteTables().size());
}

TEST_F(TableDemuxTest, CountsFaultsByPidThatOfAPmtPidThatIsGoneIncluded) {
  Bytes broken = makePmt(101, 4, 0x101, {});
  broken[10] ^= 1;
  (void)send(0x00, makePat(1, 2, {{101, 0x100}}));
  (void)send(0x100, broken);
  broken = test::makeSdt(1, 6, 101, "One");
  broken[10] ^= 1;
  (void)send(0x11, broken);
  (void)send(0x00, makePat(1, 3, {{101, 0x200}}));
  FaultsByPid byPid = demux_.faults();
  EXPECT_EQ(1U, byPid[0x100].crcErrors);
  EXPECT_EQ(1U, byPid[0x11].crcErrors);
  EXPECT_EQ(0U, byPid[0x00].crcErrors);
  EXPECT_EQ(1U, byPid.count(0x200));
  EXPECT_EQ(2U, sumOf(demux_.faults()).crcErrors);
}

TEST_F(TableDemuxTest, PassesOnWhatTheConsumerThrowsAndStaysUsable) {
  int calls = 0;
  TableDemux demux([&calls](const SiTable&, size_t) {
    if (++calls == 1) {
      throw std::runtime_error("no");
    }
  });
  const TsPacket first = writer_.section(0x01, makeSection({0x01, 0, 3}, {}))[0];
  EXPECT_THROW(demux.push(first), std::runtime_error);
  demux.push(writer_.section(0x01, makeSection({0x01, 0, 4}, {}))[0]);
  EXPECT_EQ(2, calls);
}

}  // namespace
}  // namespace tevra::tools
