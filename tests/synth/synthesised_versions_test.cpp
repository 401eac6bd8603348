#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <utility>
#include <vector>

#include "tests/synth/synthesis_fixture.h"

// How the version moves is the same for all three tables.

namespace tevra::test {
namespace {

using testing::ElementsAre;

template <class Table>
class SynthesisedVersion : public SynthesisTest<Table> {
 protected:
  void expectVersion(int version) const {
    EXPECT_EQ(this->stored().version, version);
    EXPECT_EQ(this->output().version, version);
    EXPECT_EQ(versionOf(this->section()), version);
  }
};

using Tables = testing::Types<PAT, SDT, PMT>;
TYPED_TEST_SUITE(SynthesisedVersion, Tables, );  // the comma: a variadic macro wants an argument

TYPED_TEST(SynthesisedVersion, StaysASecondTimeAndNothingIsSaved) {
  this->synthesise();
  const TypeParam first = this->output();
  const Packets firstPackets = this->packets();
  EXPECT_EQ(this->synthesise(), 0);
  EXPECT_EQ(this->output(), first);
  EXPECT_EQ(this->stored(), first);
  EXPECT_EQ(this->packets(), firstPackets);
  this->expectVersion(1);
  EXPECT_THAT(fake::logLines(), ElementsAre(packetsMade(1)));
}

TYPED_TEST(SynthesisedVersion, IsNotMovedByTheCurrentNextFlagWhichIsSentAllTheSame) {
  this->synthesise();
  this->source().currentNext = false;
  this->synthesise();
  EXPECT_THAT(fake::logLines(), ElementsAre(packetsMade(1)));
  this->expectVersion(1);
  EXPECT_FALSE(currentNextOf(this->section()));
  EXPECT_TRUE(this->stored().currentNext);  // what is stored changes with the content only
  // An unchanged PMT is answered as it is stored.
  EXPECT_EQ(this->output().currentNext, (std::is_same_v<TypeParam, PMT>));
}

TYPED_TEST(SynthesisedVersion, IsNotTheInputs) {
  this->source().version = 22;
  this->synthesise();
  this->expectVersion(1);
}

TYPED_TEST(SynthesisedVersion, ThirtyOneIsFollowedByZero) {
  this->restoreVersion(31);
  this->synthesise();
  this->expectVersion(0);
}

TYPED_TEST(SynthesisedVersion, LeadsBackIntoRangeFromWhateverIsStored) {
  const std::vector<std::pair<int32_t, int>> versions = {
      {-1, 0}, {300, 13}, {std::numeric_limits<int32_t>::max(), 0}};
  for (const auto& [stored, next] : versions) {
    this->restoreVersion(stored);
    this->synthesise();
    this->expectVersion(next);
  }
}

}  // namespace
}  // namespace tevra::test
