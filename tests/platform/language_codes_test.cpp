#include <gtest/gtest.h>

#include <array>
#include <string>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

struct Pair {
  const char* terminological;
  const char* bibliographic;
};

constexpr std::array<Pair, 20> kPairs = {{
    {"sqi", "alb"}, {"hye", "arm"}, {"eus", "baq"}, {"mya", "bur"}, {"zho", "chi"},
    {"ces", "cze"}, {"nld", "dut"}, {"fra", "fre"}, {"kat", "geo"}, {"deu", "ger"},
    {"ell", "gre"}, {"isl", "ice"}, {"mkd", "mac"}, {"mri", "mao"}, {"msa", "may"},
    {"fas", "per"}, {"ron", "rum"}, {"slk", "slo"}, {"bod", "tib"}, {"cym", "wel"},
}};

void expectCodes(const std::string& code, const std::string& english, const std::string& other) {
  std::string englishCode;
  std::string otherCode;
  EXPECT_TRUE(getEnglishAudioCode(code, englishCode, otherCode)) << code;
  EXPECT_EQ(englishCode, english) << code;
  EXPECT_EQ(otherCode, other) << code;
}

TEST(EnglishAudioCode, TerminologicalCodesBecomeBibliographic) {
  for (const Pair& pair : kPairs) {
    expectCodes(pair.terminological, pair.bibliographic, pair.terminological);
  }
}

TEST(EnglishAudioCode, BibliographicCodesStayAndFindTheirTerminologicalForm) {
  for (const Pair& pair : kPairs) {
    expectCodes(pair.bibliographic, pair.bibliographic, pair.terminological);
  }
}

TEST(EnglishAudioCode, CaseDoesNotMatter) {
  expectCodes("DEU", "ger", "deu");
  expectCodes("Fra", "fre", "fra");
  expectCodes("gEr", "ger", "deu");
}

TEST(EnglishAudioCode, OtherCodesComeBackInLowerCase) {
  expectCodes("eng", "eng", "eng");
  expectCodes("ENG", "eng", "eng");
  expectCodes("qaa", "qaa", "qaa");
  expectCodes("ZZZ", "zzz", "zzz");
}

TEST(EnglishAudioCode, AnythingButThreeLettersFailsAndLeavesTheOutputs) {
  using namespace std::string_literals;
  for (const std::string& code :
       {""s, "d"s, "en"s, "engl"s, "deu "s, "en "s, " en"s, "e1g"s, "123"s, "e-n"s, "[aZ"s, "a`z"s,
        "a{z"s, "A@Z"s, "de\0"s, "\0\0\0"s,
        "\xC3\xB1"
        "a"s,
        "\xFF\xFF\xFF"s}) {
    std::string englishCode = "before";
    std::string otherCode = "also";
    EXPECT_FALSE(getEnglishAudioCode(code, englishCode, otherCode)) << code;
    EXPECT_EQ(englishCode, "before");
    EXPECT_EQ(otherCode, "also");
  }
}

TEST(EnglishAudioCode, AnOutputMayBeTheInput) {
  std::string code = "Deu";
  std::string other;
  EXPECT_TRUE(getEnglishAudioCode(code, code, other));
  EXPECT_EQ(code, "ger");
  EXPECT_EQ(other, "deu");
}

}  // namespace
}  // namespace tevra
