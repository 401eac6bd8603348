#include <gtest/gtest.h>

#include <string>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

TEST(EnglishAudioCode, IsTheCodeAsTheStreamWritesIt) {
  // Of either form where ISO 639-2 has two, in either case, reserved for local use, unassigned.
  for (const std::string code : {"eng", "deu", "ger", "fra", "fre", "ENG", "Deu", "gEr", "qaa",
                                 "qtz", "mul", "und", "ZZZ"}) {
    std::string englishCode;
    std::string other;
    EXPECT_TRUE(getEnglishAudioCode(code, englishCode, other)) << code;
    EXPECT_EQ(englishCode, code);
    EXPECT_EQ(other, code);
  }
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
  EXPECT_EQ(code, "Deu");
  EXPECT_EQ(other, "Deu");
}

}  // namespace
}  // namespace tevra
