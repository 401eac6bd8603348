#include "synth/audio_languages.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/fakes/fake_platform.h"
#include "tests/synth/builders.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class AudioLanguages : public fake::PlatformTest {
 protected:
  static bool exists(std::vector<AudioLanguage> list, const std::string& language) {
    return languageExists(LanguageList(list), language);
  }

  static void merge(std::vector<AudioLanguage>& target, const std::vector<AudioLanguage>& source) {
    LanguageList list(target);
    mergeLanguages(list, source);
  }
};

const LogLine kEngExists{7, "fltr", "Language alredy Exists at langOutList [eng]"};

LogLine adding(const std::string& code) {
  return {7, "fltr", "Adding new lang to list [" + code + "]"};
}

TEST_F(AudioLanguages, NothingExistsInAnEmptyList) {
  EXPECT_FALSE(exists({}, "eng"));
  EXPECT_FALSE(exists({}, ""));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(AudioLanguages, AMissIsNotLogged) {
  EXPECT_FALSE(exists(makeLanguages({"spa", "fra"}), "eng"));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(AudioLanguages, AMatchIsLoggedUnderTheFilterTag) {
  EXPECT_TRUE(exists(makeLanguages({"spa", "eng", "fra"}), "eng"));
  EXPECT_THAT(fake::logLines(), ElementsAre(kEngExists));
}

TEST_F(AudioLanguages, EveryMatchIsLoggedBecauseTheWalkGoesOn) {
  EXPECT_TRUE(exists(makeLanguages({"eng", "spa", "eng", "eng"}), "eng"));
  EXPECT_THAT(fake::logLines(), ElementsAre(kEngExists, kEngExists, kEngExists));
}

TEST_F(AudioLanguages, LanguagesThatDifferInCaseAreDifferent) {
  EXPECT_FALSE(exists(makeLanguages({"ENG", "Eng"}), "eng"));
}

TEST_F(AudioLanguages, LanguagesThatDifferInLengthAreDifferent) {
  EXPECT_FALSE(exists(makeLanguages({"en", "engl", "eng ", ""}), "eng"));
}

TEST_F(AudioLanguages, BytesAfterAZeroCount) {
  const std::string withZero("en\0x", 4);
  EXPECT_FALSE(exists(makeLanguages({"en", std::string("en\0y", 4)}), withZero));
  EXPECT_TRUE(exists(makeLanguages({withZero}), withZero));
}

TEST_F(AudioLanguages, MergingIntoAnEmptyListKeepsTheOrder) {
  std::vector<AudioLanguage> target;
  merge(target, makeLanguages({"spa", "eng", "cat"}));
  EXPECT_THAT(codesOf(target), ElementsAre("spa", "eng", "cat"));
  EXPECT_THAT(fake::logLines(), ElementsAre(adding("spa"), adding("eng"), adding("cat")));
}

TEST_F(AudioLanguages, MergingAppendsOnlyWhatIsMissing) {
  std::vector<AudioLanguage> target = makeLanguages({"spa", "eng"});
  merge(target, makeLanguages({"fra", "eng", "ita"}));
  EXPECT_THAT(codesOf(target), ElementsAre("spa", "eng", "fra", "ita"));
  EXPECT_THAT(fake::logLines(), ElementsAre(adding("fra"), kEngExists, adding("ita")));
}

TEST_F(AudioLanguages, ALanguageTwiceInTheSourceIsAddedOnce) {
  std::vector<AudioLanguage> target;
  merge(target, makeLanguages({"eng", "eng"}));
  EXPECT_THAT(codesOf(target), ElementsAre("eng"));
  EXPECT_THAT(fake::logLines(), ElementsAre(adding("eng"), kEngExists));
}

TEST_F(AudioLanguages, MergingNothingChangesNothing) {
  std::vector<AudioLanguage> target = makeLanguages({"spa"});
  merge(target, {});
  EXPECT_THAT(codesOf(target), ElementsAre("spa"));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

TEST_F(AudioLanguages, AMergedEntryIsACopyFlagIncluded) {
  std::vector<AudioLanguage> source = makeLanguages({"spa", "eng"});
  source[1].__isset.language = true;
  std::vector<AudioLanguage> target;
  merge(target, source);
  source[0].language = "changed";
  ASSERT_THAT(codesOf(target), ElementsAre("spa", "eng"));
  EXPECT_FALSE(target[0].__isset.language);
  EXPECT_TRUE(target[1].__isset.language);
}

TEST_F(AudioLanguages, TheTextOfAListNamesEveryLanguageInOrder) {
  EXPECT_EQ(formatLanguageList({}), "Audios: ");
  EXPECT_EQ(formatLanguageList(makeLanguages({"spa"})), R"(Audios: "spa", )");
  EXPECT_EQ(formatLanguageList(makeLanguages({"spa", "eng"})), R"(Audios: "spa", "eng", )");
}

TEST_F(AudioLanguages, TheTextOfAListLeavesOutWhatItsEightyCharactersCannotHold) {
  // 8 for the head and 7 for each language: the tenth ends at 78, the eleventh would at 85.
  const std::vector<AudioLanguage> eleven(11, makeLanguages({"spa"}).front());
  std::string ten = "Audios: ";
  for (int i = 0; i < 10; ++i) {
    ten += R"("spa", )";
  }
  EXPECT_EQ(formatLanguageList(eleven), ten);
}

TEST_F(AudioLanguages, TheTextOfAListFillsItsBufferToTheLastCharacterBeforeTheZero) {
  const std::string longest(67, 'x');  // 8 + 67 + 4 = 79
  EXPECT_EQ(formatLanguageList(makeLanguages({longest})).size(), 79U);
  EXPECT_EQ(formatLanguageList(makeLanguages({longest + "x"})), "Audios: ");
}

TEST_F(AudioLanguages, AShorterLanguageAfterOneThatDoesNotFitIsStillListed) {
  EXPECT_EQ(formatLanguageList(makeLanguages({std::string(1000, 'x'), "eng"})),
            R"(Audios: "eng", )");
}

}  // namespace
}  // namespace tevra::test
