#include "synth/dvb_name.h"

#include <gtest/gtest.h>

namespace tevra {
namespace {

std::string repeated(const std::string& unit, size_t count) {
  std::string text;
  for (size_t i = 0; i < count; ++i) {
    text += unit;
  }
  return text;
}

TEST(DvbName, WhatFitsStaysAsItIs) {
  EXPECT_EQ(cutDvbText("", 244), "");
  EXPECT_EQ(cutDvbText("", 0), "");
  EXPECT_EQ(cutDvbText("Uno HD", 6), "Uno HD");
  // Even half a character at the end, which is not this function's to judge.
  EXPECT_EQ(cutDvbText("abc\xC8", 4), "abc\xC8");
}

TEST(DvbName, PlainTextIsCutAtTheLimit) {
  EXPECT_EQ(cutDvbText("abcdef", 5), "abcde");
  EXPECT_EQ(cutDvbText("abcdef", 0), "");
}

TEST(DvbName, ADiacriticStaysWithItsLetter) {
  // ISO/IEC 6937: 0xC2 is the acute accent of the letter that follows.
  EXPECT_EQ(cutDvbText("abc\xC2"
                       "ef",
                       4),
            "abc");
  EXPECT_EQ(cutDvbText("abc\xC2"
                       "ef",
                       5),
            "abc\xC2"
            "e");
}

TEST(DvbName, EveryDiacriticOfTheDefaultTableIsRecognised) {
  for (int lead = 0xC1; lead <= 0xCF; ++lead) {
    const std::string text = std::string("a") + static_cast<char>(lead) + "ef";
    EXPECT_EQ(cutDvbText(text, 2), "a") << "lead " << lead;
  }
  for (const int other : {0xC0, 0xD0, 0xA0, 0xFF}) {
    const std::string text = std::string("a") + static_cast<char>(other) + "ef";
    EXPECT_EQ(cutDvbText(text, 2), text.substr(0, 2)) << "byte " << other;
  }
}

TEST(DvbName, OneByteTablesAreCutAnywhere) {
  for (char selector = 0x01; selector <= 0x0B; ++selector) {
    const std::string text = std::string(1, selector) +
                             "a\xC2"
                             "ef";
    EXPECT_EQ(cutDvbText(text, 3), text.substr(0, 3)) << "selector " << int{selector};
  }
}

TEST(DvbName, TablesOfTheThreeByteSelectorAreCutAnywhereBehindIt) {
  const std::string text(
      "\x10\x00\x05"
      "a\xC2"
      "ef",
      7);
  EXPECT_EQ(cutDvbText(text, 6), text.substr(0, 6));
  EXPECT_EQ(cutDvbText(text, 5), text.substr(0, 5));
  EXPECT_EQ(cutDvbText(text, 3), text.substr(0, 3));
}

TEST(DvbName, ASelectorIsNeverHalved) {
  const std::string text(
      "\x10\x00\x05"
      "abc",
      6);
  EXPECT_EQ(cutDvbText(text, 2), "");
  EXPECT_EQ(cutDvbText(text, 1), "");
  EXPECT_EQ(cutDvbText("\x15"
                       "abc",
                       0),
            "");
}

TEST(DvbName, Ucs2IsCutBetweenCharacters) {
  const std::string text("\x11\x04\x10\x04\x11\x04\x12", 7);
  EXPECT_EQ(cutDvbText(text, 6), text.substr(0, 5));
  EXPECT_EQ(cutDvbText(text, 5), text.substr(0, 5));
  EXPECT_EQ(cutDvbText(text, 4), text.substr(0, 3));
  EXPECT_EQ(cutDvbText(text, 2), text.substr(0, 1));
}

TEST(DvbName, DoubleByteTablesAreCutBetweenCharacters) {
  for (char selector = 0x12; selector <= 0x14; ++selector) {
    const std::string text = std::string(1, selector) + "a\xB0\xA1\xB0\xA2";
    EXPECT_EQ(cutDvbText(text, 5), text.substr(0, 4)) << "selector " << int{selector};
    EXPECT_EQ(cutDvbText(text, 4), text.substr(0, 4)) << "selector " << int{selector};
    EXPECT_EQ(cutDvbText(text, 3), text.substr(0, 2)) << "selector " << int{selector};
  }
}

TEST(DvbName, Utf8IsCutBetweenCharactersOfAnyLength) {
  const std::string text =
      "\x15"
      "a\xC3\xB1\xE2\x82\xAC\xF0\x9F\x93\xBA"
      "z";  // a ñ € 📺 z
  const size_t cuts[] = {0, 1, 2, 2, 4, 4, 4, 7, 7, 7, 7, 11};
  for (size_t limit = 0; limit < text.size(); ++limit) {
    EXPECT_EQ(cutDvbText(text, limit), text.substr(0, cuts[limit])) << "limit " << limit;
  }
}

TEST(DvbName, BrokenUtf8IsCutWithoutEndOrOverrun) {
  EXPECT_EQ(cutDvbText("\x15" + repeated("\x80", 300), 244).size(), 244U);
  EXPECT_LE(cutDvbText("\x15" + repeated("\xFF", 300), 244).size(), 244U);
  EXPECT_LE(cutDvbText("\x15" + std::string(243, 'a') + "\xF0", 244).size(), 244U);
}

TEST(DvbName, EveryTextIsCutToItsLimitWhateverItsBytes) {
  for (int first = 0; first < 256; ++first) {
    for (const char rest : {'\x00', '\x41', '\x80', '\xC3', '\xF7', '\xFF'}) {
      const std::string text = static_cast<char>(first) + std::string(260, rest);
      const std::string cut = cutDvbText(text, 244);
      EXPECT_LE(cut.size(), 244U);
      EXPECT_GE(cut.size(), 240U) << "first byte " << first << ": no character is that long";
      EXPECT_EQ(cut, text.substr(0, cut.size()));
    }
  }
}

}  // namespace
}  // namespace tevra
