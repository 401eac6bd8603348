#include "tools/text/words.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(Words, AWholeNumberIsDecimalOrHexadecimal) {
  EXPECT_EQ(0, wholeNumber("0"));
  EXPECT_EQ(101, wholeNumber("0101")) << "not octal";
  EXPECT_EQ(-8, wholeNumber("-08"));
  EXPECT_EQ(0x1F, wholeNumber("0x1f"));
  EXPECT_EQ(0x1F, wholeNumber("0X001F"));
  EXPECT_EQ(INT64_MAX, wholeNumber("9223372036854775808")) << "the nearest";
  EXPECT_EQ(INT64_MIN, wholeNumber("-9223372036854775809"));
  EXPECT_EQ(INT64_MAX, wholeNumber("0x8000000000000000"));
  for (const char* text : {"", " ", "-", "+1", " 1", "1 ", "1.5", "1x", "x", "0x", "0x-1", "0xg"}) {
    EXPECT_EQ(std::nullopt, wholeNumber(text)) << text;
  }
}

TEST(Words, CountInSingularAndPlural) {
  EXPECT_EQ("0 packets", counted(0, "packet"));
  EXPECT_EQ("1 packet", counted(1, "packet"));
  EXPECT_EQ("2 packets", counted(2, "packet"));
  EXPECT_EQ("2 entries", counted(2, "entry", "entries"));
}

TEST(Words, WriteHexadecimalDigits) {
  EXPECT_EQ("0x4E", hex(0x4E, 2));
  EXPECT_EQ("0x004E", hex(0x4E, 4));
}

TEST(Words, WriteAnIdInBothWays) {
  EXPECT_EQ("257 (0x0101)", idText(257));
}

TEST(Words, WriteBytesAsPairsOfDigits) {
  EXPECT_EQ("", hexDigits(""));
  EXPECT_EQ("00ff1a", hexDigits(std::string("\0\xFF\x1A", 3)));
}

TEST(Words, KeepATextOnItsLine) {
  EXPECT_EQ("a b  c \u00e9", oneLine("a\nb\r\tc\x7F\u00e9"));
  EXPECT_EQ("", oneLine(""));
}

TEST(Words, AreAsWideAsTheirCharacters) {
  EXPECT_EQ(0U, displayWidth(""));
  EXPECT_EQ(4U, displayWidth("Télé"));
}

TEST(Words, StandWithASeparatorBetween) {
  EXPECT_EQ("", joined({}, ", "));
  EXPECT_EQ("a", joined({"a"}, ", "));
  EXPECT_EQ("a, b", joined({"a", "b"}, ", "));
  EXPECT_EQ("", numbersText({}));
  EXPECT_EQ("1, 20", numbersText({1, 20}));
}

}  // namespace
}  // namespace tevra::tools
