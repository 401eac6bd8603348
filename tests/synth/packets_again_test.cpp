#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/synth/pmt_sections_fixture.h"
#include "tests/synth/synthesis_fixture.h"

namespace tevra::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

const Packets kMarker = {"not to be had by making packets"};

/** Of a table that was synthesised once, the kept packets are replaced by a marker. */
template <class Table>
class PacketsAgain : public SynthesisTest<Table> {
 protected:
  using Way = Synthesis<Table>;

  PacketsAgain() {
    this->synthesise();
    EXPECT_EQ(kept().packets(), this->packets());
    kept() = KeptPackets(kMarker, this->stored().version, true, Way::kPid);
  }

  KeptPackets& kept() { return this->entry_.*Way::kKept; }

  /** The packets are made, and kept for the next time. */
  void expectMade() {
    EXPECT_EQ(this->synthesise(), 0);
    EXPECT_NE(this->packets(), kMarker);
    EXPECT_EQ(kept().packets(), this->packets());
  }
};

using Tables = testing::Types<PAT, SDT, PMT>;
TYPED_TEST_SUITE(PacketsAgain, Tables, );  // the comma: a variadic macro wants an argument

TYPED_TEST(PacketsAgain, AreThoseOfTheLastTimeWithTheLineOfThoseMade) {
  EXPECT_EQ(this->synthesise(), 0);
  EXPECT_EQ(this->packets(), kMarker);
  EXPECT_THAT(fake::logLines(), ElementsAre(packetsMade(1)));
}

TYPED_TEST(PacketsAgain, AreMadeOfAnotherContent) {
  this->input_.identity.outputSID = 1202;
  this->expectMade();
}

TYPED_TEST(PacketsAgain, AreMadeOfAnotherFlag) {
  this->source().currentNext = false;
  this->expectMade();
}

TYPED_TEST(PacketsAgain, AreMadeAfterARestart) {
  this->restore(TypeParam(this->stored()));
  this->expectMade();
}

using PmtPacketsAgain = PacketsAgain<PMT>;

TEST_F(PmtPacketsAgain, AreMadeForAnotherPid) {
  service_.pat.programs[0].pid = 0x99;
  expectMade();
  EXPECT_EQ(sectionsOf(packets(), 0x99).size(), 1U);
}

TEST_F(PmtPacketsAgain, AreMadeEachTimeWhereTheLogTellsOfThem) {
  input_.pmt.esList[1].descriptors = makeFillers(4 * 257);
  for (const int times : {1, 2}) {
    EXPECT_EQ(synthesise(), 0);
    EXPECT_THAT(fake::logLines(3), Not(IsEmpty())) << times;
    EXPECT_THAT(kept().packets(), IsEmpty());
  }
}

}  // namespace
}  // namespace tevra::test
