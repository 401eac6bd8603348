#include "tools/report/facts/section_tally.h"

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

using State = SectionSeen::State;

TEST(SectionTally, CountsSectionsByPidAndTable) {
  SectionTally tally;
  tally.add(0x11, {State::kSound, 0x42, 1, 0});
  tally.add(0x11, {State::kSound, 0x42, 1, 0});
  tally.add(0x11, {State::kWrongCrc, 0x42, 1, 0});
  tally.add(0x11, {State::kMalformed, 0x46, 2, 0});
  EXPECT_EQ(2U, tally.on(0x11).at(0x42).sound);
  EXPECT_EQ(1U, tally.on(0x11).at(0x42).wrongCrc);
  EXPECT_EQ(1U, tally.on(0x11).at(0x46).malformed);
  EXPECT_EQ(4U, tally.sections(0x11));
  EXPECT_EQ(0U, tally.sections(0x12));
}

TEST(SectionTally, CountsHowOftenATableCameByItsFirstSection) {
  SectionTally tally;
  for (int round = 0; round < 3; ++round) {
    for (const int number : {0, 1, 2}) {
      tally.add(0x12, {State::kSound, 0x50, 101, number});
    }
  }
  tally.add(0x12, {State::kWrongCrc, 0x50, 101, 0});
  tally.add(0x01, {State::kSound, 0x01, 0xFFFF, 0});  // reserved in a CAT
  EXPECT_EQ(3U, tally.arrivals(0x50, 101));
  EXPECT_EQ(0U, tally.arrivals(0x50, 102));
  EXPECT_EQ(1U, tally.arrivals(0x01, 0));
}

}  // namespace
}  // namespace tevra::tools::report
