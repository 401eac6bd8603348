#include "tools/outputs/language_codes.h"

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;

TEST(LanguageCodes, MeanOneLanguageInAnyCase) {
  EXPECT_TRUE(isSameLanguage("eng", "ENG"));
  EXPECT_TRUE(isSameLanguage("Oth", "oTH"));
  EXPECT_FALSE(isSameLanguage("eng", "spa"));
  EXPECT_FALSE(isSameLanguage("fra", "fr"));
  EXPECT_FALSE(isSameLanguage("\xC1ng", "\xE1ng")) << "letters of ASCII alone";
}

TEST(LanguageCodes, AreTwoOfTwentyLanguages) {
  for (const char* pair :
       {"alb sqi", "arm hye", "baq eus", "bur mya", "chi zho", "cze ces", "dut nld",
        "fre fra", "geo kat", "ger deu", "gre ell", "ice isl", "mac mkd", "mao mri",
        "may msa", "per fas", "rum ron", "slo slk", "tib bod", "wel cym"}) {
    const std::string bibliographic(pair, 3);
    const std::string terminological(pair + 4);
    EXPECT_TRUE(isSameLanguage(bibliographic, terminological)) << pair;
    EXPECT_TRUE(isSameLanguage(terminological, bibliographic)) << pair;
    EXPECT_EQ(bibliographic + "/" + terminological, languageText(bibliographic));
    EXPECT_EQ(terminological + "/" + bibliographic, languageText(terminological));
  }
  EXPECT_FALSE(isSameLanguage("fre", "deu"));
}

TEST(LanguageCodes, AreShownAsTheyAreWritten) {
  EXPECT_EQ("FRE/fra", languageText("FRE"));
  EXPECT_EQ("Oth", languageText("Oth"));
}

TEST(LanguageCodes, AreAskedForAsTheStreamWritesThem) {
  EXPECT_THAT(codesToAskFor("fra", {"ita", "FrE", "FRA"}), ElementsAre("fra", "fre", "FrE", "FRA"));
  EXPECT_THAT(codesToAskFor("GER", {"eng"}), ElementsAre("GER", "ger", "deu"));
  EXPECT_THAT(codesToAskFor("eng", {"eng"}), ElementsAre("eng"));
}

TEST(LanguageCodes, AreAskedForInTheUsualCasesWithoutAStream) {
  EXPECT_THAT(codesToAskFor("deu", {}),
              UnorderedElementsAre("deu", "DEU", "Deu", "ger", "GER", "Ger"));
  EXPECT_THAT(codesToAskFor("eNG", {}), ElementsAre("eNG", "eng", "ENG", "Eng"));
}

}  // namespace
}  // namespace tevra::tools
