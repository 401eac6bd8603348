#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "synth/audio_languages.h"
#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class AudioSelection : public fake::PlatformTest {
 protected:
  void combine(const std::vector<LastNodeSettings>& entries) {
    combineAudioSelection(combined_, entries);
  }

  LastNodeSettings combined_;
};

TEST_F(AudioSelection, NoEntriesLeaveTheSelectionAsItIs) {
  combine({});
  EXPECT_EQ(combined_.audioFilter, 0);
  EXPECT_THAT(combined_.audioLanguages, IsEmpty());

  combined_ = makeFilter(true, {"eng"});
  combine({});
  EXPECT_EQ(combined_, makeFilter(true, {"eng"}));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(AudioSelection, TwoFiltersCombineToTheUnionOfTheirLanguages) {
  combine({makeFilter(true, {"spa", "eng"}), makeFilter(true, {"eng", "fra"})});
  EXPECT_EQ(combined_.audioFilter, 1);
  EXPECT_THAT(codesOf(combined_.audioLanguages), ElementsAre("spa", "eng", "fra"));
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "fltr", "Adding new lang to list [spa]"},
                          LogLine{7, "fltr", "Adding new lang to list [eng]"},
                          LogLine{7, "fltr", "Language alredy Exists at langOutList [eng]"},
                          LogLine{7, "fltr", "Adding new lang to list [fra]"}));
}

TEST_F(AudioSelection, HundredsOfThousandsOfLanguagesAreMergedWithoutDelay) {
  LastNodeSettings many = makeFilter(true, {});
  many.audioLanguages.resize(300'000);  // searching the list for each would exceed a test's time
  for (size_t i = 0; i < many.audioLanguages.size(); ++i) {
    many.audioLanguages[i].language = std::to_string(i);
  }
  combine({many, many});
  EXPECT_EQ(combined_.audioLanguages, many.audioLanguages);
}

TEST_F(AudioSelection, OneFilterIsTakenAsItIs) {
  combine({makeFilter(true, {"ita", "eng"})});
  EXPECT_EQ(combined_.audioFilter, 1);
  EXPECT_THAT(codesOf(combined_.audioLanguages), ElementsAre("ita", "eng"));
}

TEST_F(AudioSelection, AFilterWithoutLanguagesIsAFilterAllTheSame) {
  combine({makeFilter(true, {}), makeFilter(true, {})});
  EXPECT_EQ(combined_.audioFilter, 1);
  EXPECT_THAT(combined_.audioLanguages, IsEmpty());
}

TEST_F(AudioSelection, AnEntryWithoutFilterAfterOneDiscardsWhatWasMerged) {
  combine({makeFilter(true, {"spa"}), makeFilter(false, {})});
  EXPECT_EQ(combined_.audioFilter, 0);
  EXPECT_THAT(combined_.audioLanguages, IsEmpty());
  EXPECT_THAT(fake::logLines(), ElementsAre(LogLine{7, "fltr", "Adding new lang to list [spa]"}));
}

TEST_F(AudioSelection, AFirstEntryWithoutFilterEndsItWhateverFollows) {
  combined_ = makeFilter(true, {"cat"});
  combine({makeFilter(false, {"spa"}), makeFilter(true, {"eng"}), makeFilter(true, {"fra"})});
  EXPECT_EQ(combined_.audioFilter, 0);
  EXPECT_THAT(combined_.audioLanguages, IsEmpty());
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(AudioSelection, NothingIsMergedBehindAnEntryWithoutFilter) {
  combine({makeFilter(true, {"spa"}), makeFilter(false, {}), makeFilter(true, {"eng"})});
  EXPECT_EQ(combined_.audioFilter, 0);
  EXPECT_THAT(combined_.audioLanguages, IsEmpty());
  EXPECT_FALSE(fake::logged(7, "Adding new lang to list [eng]"));
}

TEST_F(AudioSelection, LanguagesThatDifferInCaseAreBothSelected) {
  combine({makeFilter(true, {"ENG"}), makeFilter(true, {"eng"})});
  EXPECT_THAT(codesOf(combined_.audioLanguages), ElementsAre("ENG", "eng"));
}

TEST_F(AudioSelection, AnyNonzeroFlagIsAFilter) {
  LastNodeSettings negative = makeFilter(true, {"eng"});
  negative.audioFilter = -5;
  combine({negative});
  EXPECT_EQ(combined_.audioFilter, 1);
  EXPECT_THAT(codesOf(combined_.audioLanguages), ElementsAre("eng"));
}

TEST_F(AudioSelection, OnlyTheFilterIsCombined) {
  combined_ = makeLastNode(77, 78);
  LastNodeSettings entry = makeFilter(true, {"eng"});
  entry.globalSID = 1;
  entry.uniqueSID = 2;
  entry.lastNodeName = "node";
  combine({entry});
  EXPECT_EQ(combined_.globalSID, 77);
  EXPECT_EQ(combined_.uniqueSID, 78);
  EXPECT_EQ(combined_.lastNodeName, "");
}

}  // namespace
}  // namespace tevra::test
