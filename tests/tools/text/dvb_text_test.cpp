#include "tools/text/dvb_text.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(DvbText, ReadsTextWithoutSelectorAsIso6937) {
  EXPECT_EQ("", utf8FromDvbText(""));
  EXPECT_EQ("Uno HD", utf8FromDvbText("Uno HD"));
  EXPECT_EQ("Télé", utf8FromDvbText("T\xC2"
                                    "el\xC2"
                                    "e"));
  EXPECT_EQ("1 €", utf8FromDvbText("1 \xA4"));
}

TEST(DvbText, ReadsTheSelectedIso8859Table) {
  EXPECT_EQ("Да", utf8FromDvbText("\x01\xB4\xD0"));
  EXPECT_EQ("Süd", utf8FromDvbText(std::string("\x10\x00\x0FS\xFC"
                                               "d",
                                               6)));
}

TEST(DvbText, ReadsUcs2AndUtf8) {
  EXPECT_EQ("Aä", utf8FromDvbText(std::string("\x11\x00\x41\x00\xE4", 5)));
  EXPECT_EQ("日本", utf8FromDvbText("\x15日本"));
}

TEST(DvbText, LeavesOutControlCodesButKeepsALineBreakAsABlank) {
  EXPECT_EQ("Uno dos", utf8FromDvbText("\x86Uno\x87\x8A"
                                       "dos"));
  EXPECT_EQ("Uno dos", utf8FromDvbText("\x15Uno\xEE\x82\x8A"
                                       "dos\xEE\x82\x86"));
}

TEST(DvbText, ReplacesWhatItCannotRead) {
  EXPECT_EQ("a\xEF\xBF\xBD", utf8FromDvbText("\x15"
                                             "a\xFF"));
  EXPECT_EQ("\xEF\xBF\xBD", utf8FromDvbText("\x1F\x41")) << "a table that is not known";
  EXPECT_EQ("\xEF\xBF\xBD", utf8FromDvbText(std::string("\x10\x00\x63\x41", 4)));
}

TEST(DvbText, EveryByteStringGivesSomeText) {
  for (int first = 0; first < 256; ++first) {
    for (int second = 0; second < 256; ++second) {
      const std::string text = {static_cast<char>(first), static_cast<char>(second), 'x', '\xC2'};
      const std::string utf8 = utf8FromDvbText(text);
      ASSERT_EQ(utf8, printable(utf8)) << first << " " << second;
    }
  }
}

TEST(DvbText, LeavesOutControlCharactersOfUnicodeWhichTerminalsObey) {
  EXPECT_EQ("a[31mb", utf8FromDvbText("\x15"
                                      "a\x1B[31mb"));
  EXPECT_EQ("a31mb", utf8FromDvbText("\x15"
                                     "a\xC2\x9B"
                                     "31mb"));
  EXPECT_EQ("\xC2\xA0", utf8FromDvbText("\x15\xC2\xA0")) << "no control character";
}

TEST(DvbText, PrintableReplacesBothSetsOfControlCharacters) {
  EXPECT_EQ("\xEF\xBF\xBD[31m", printable("\x1B[31m"));
  EXPECT_EQ(
      "\xEF\xBF\xBD"
      "31m",
      printable("\xC2\x9B"
                "31m"));
  EXPECT_EQ("\xC2\xA0", printable("\xC2\xA0"));
}

TEST(DvbText, PrintableReplacesControlCharactersAndInvalidBytes) {
  EXPECT_EQ("a\xEF\xBF\xBD\xEF\xBF\xBDé", printable("a\n\xFFé"));
}

TEST(Utf8, IsToldFromOtherBytes) {
  for (const char* text : {"", "Uno HD", "T\xC3\xA9l\xC3\xA9", "\xEF\xBF\xBD"}) {
    EXPECT_TRUE(isUtf8(text)) << text;
  }
  for (const char* text : {"Caf\xE9", "\xC3", "\xC3\x28", "\xA9"}) {
    EXPECT_FALSE(isUtf8(text));
  }
}

}  // namespace
}  // namespace tevra::tools
