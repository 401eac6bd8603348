#include "tools/report/facts/references.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

TEST(References, AreThePidsThatHaveToComeAgainAndAgain) {
  TableJournal journal;
  journal.add(test::patRecord({{0, 0x10}, {101, 0x100}, {102, 0x200}}), 1);
  journal.add(
      test::pmtRecord({test::streamRecord(0x1B, 0x101),
                       test::streamRecord(0x04, 0x102, {test::languageDescriptor("eng")}),
                       test::streamRecord(0x04, 0x103, {test::descriptorRecord(0x0A, "eng\x03")}),
                       test::streamRecord(0x06, 0x104), test::streamRecord(0x0B, 0x105)}),
      1);
  const References references = referencesOf(journal);
  EXPECT_THAT(references.pmts, ElementsAre(0x100, 0x200));
  EXPECT_THAT(references.clocks, ElementsAre(502));
  EXPECT_THAT(references.media, ElementsAre(0x101, 0x102));
}

TEST(References, HaveNoClockWhereTheProgrammeHasNone) {
  TableJournal journal;
  journal.add(test::patRecord({{101, 0x100}}), 1);
  PMT pmt = test::pmtRecord({test::streamRecord(0x04, kNullPid)});
  pmt.pcrPid = kNullPid;
  journal.add(pmt, 1);
  EXPECT_THAT(referencesOf(journal).clocks, IsEmpty());
  EXPECT_THAT(referencesOf(journal).media, IsEmpty());
}

TEST(References, AreNoneWithoutAPat) {
  TableJournal journal;
  journal.add(test::pmtRecord({test::streamRecord(0x1B, 0x101)}), 1);
  EXPECT_THAT(referencesOf(journal).media, IsEmpty());
}

}  // namespace
}  // namespace tevra::tools::report
