#include <gtest/gtest.h>

#include <string>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

using namespace std::string_literals;

/** The DVB text of `utf8`, which has to be valid. */
std::string dvb(const std::string& utf8) {
  std::string text = "before";
  EXPECT_TRUE(dvbTextFromUTF8(utf8, text)) << testing::PrintToString(utf8);
  return text;
}

TEST(DvbText, OfNothingIsNothing) {
  EXPECT_EQ(dvb(""), "");
}

TEST(DvbText, OfAsciiIsTheSame) {
  std::string ascii;
  for (char character = ' '; character <= '~'; ++character) {
    ascii += character;
  }
  EXPECT_EQ(dvb(ascii), ascii);
  EXPECT_EQ(dvb("Uno HD"), "Uno HD");
}

TEST(DvbText, OfWesternNamesNeedsNoSelector) {
  EXPECT_EQ(dvb("España"), "Espa\xC4na");
  EXPECT_EQ(dvb("Télé Zürich"),
            "T\xC2"
            "el\xC2"
            "e Z\xC8urich");
  EXPECT_EQ(dvb("Čeština"),
            "\xCF"
            "Ce\xCFstina");
  EXPECT_EQ(dvb("Łódź"), "\xE8\xC2od\xC2z");
  EXPECT_EQ(dvb("İstanbul Ağrı"), "\xC7Istanbul A\xC6gr\xF5");
}

TEST(DvbText, PutsTheEuroWhereDvbAddedIt) {
  EXPECT_EQ(dvb("5 €, 5 $, 5 ¤"), "5 \xA4, 5 $, 5 \xA8");
}

TEST(DvbText, HasOnePlaceForEthAndDWithStroke) {
  EXPECT_EQ(dvb("Ð ð Đ đ"), "\xE2 \xF3 \xE2 \xF2");
}

TEST(DvbText, HasOnePlaceForEmDashAndHorizontalBar) {
  EXPECT_EQ(dvb("A — B ― C"), "A \xD0 B \xD0 C");
}

TEST(DvbText, OfOtherScriptsTakesTheSelectorOfTheirTable) {
  EXPECT_EQ(dvb("Россия 1"), "\x01\xC0\xDE\xE1\xE1\xD8\xEF 1");
  EXPECT_EQ(dvb("قناة"), "\x02\xE2\xE6\xC7\xC9");
  EXPECT_EQ(dvb("Ελλάδα"), "\x03\xC5\xEB\xEB\xDC\xE4\xE1");
  EXPECT_EQ(dvb("ערוץ 2"), "\x04\xF2\xF8\xE5\xF5 2");
  EXPECT_EQ(dvb("ช่อง 3"), "\x07\xAA\xE8\xCD\xA7 3");
}

TEST(DvbText, OfLatinNamesThatTable00LacksTakesTheSelectorOfTheirTable) {
  EXPECT_EQ(dvb("Rīga ģ"), "\x06R\xB4ga \xB3");
  EXPECT_EQ(dvb("„LRT“"), "\x09\xA5LRT\xB4");
  EXPECT_EQ(dvb("Ẁ TV"), "\x0A\xA8 TV");
}

TEST(DvbText, OfWhatNoTableHoldsIsUtf8) {
  for (const std::string& text :
       {"中文"s, "日本 HD"s, "한국"s, "हिन्दी"s, "ქართული"s, "😀"s, "Știri"s, "A…"s}) {
    EXPECT_EQ(dvb(text), "\x15" + text);
  }
}

TEST(DvbText, OfMixedScriptsIsUtf8) {
  EXPECT_EQ(dvb("Россия Ελλάδα"), "\x15Россия Ελλάδα");
  EXPECT_EQ(dvb("Россия é"), "\x15Россия é");
}

TEST(DvbText, DoesNotTrustPlacesThatOnlyNewerEditionsHave) {
  EXPECT_EQ(dvb("Ελλάδα 5 €"),
            "\x15"
            "Ελλάδα 5 €");
  EXPECT_EQ(dvb("ערוץ\u200F"), "\x15ערוץ\u200F");
}

TEST(DvbText, KeepsCharactersThatConversionWouldSwallow) {
  EXPECT_EQ(dvb("A\U000E0041"),
            "\x15"
            "A\U000E0041");
}

TEST(DvbText, ComposesALetterAndTheMarkAfterIt) {
  EXPECT_EQ(dvb("Te\u0301le\u0301"), dvb("Télé"));
  EXPECT_EQ(dvb("Espan\u0303a"), dvb("España"));
  EXPECT_EQ(dvb("C\u030Ces\u030Ctina"), dvb("Čeština"));
  EXPECT_EQ(dvb("g\u0327"), dvb("ģ"));
}

TEST(DvbText, ComposesAlsoWhereTheRestNeedsUtf8) {
  EXPECT_EQ(dvb("e\u0301 中"), "\x15é 中");
}

TEST(DvbText, ComposesOnlyTheFirstOfTwoMarks) {
  EXPECT_EQ(dvb("e\u0302\u0301"), "\x15ê\u0301");
}

TEST(DvbText, LeavesMarksThatComposeToNothing) {
  EXPECT_EQ(dvb("x\u0301"), "\x15x\u0301");
  EXPECT_EQ(dvb("\u0301"), "\x15\u0301");
  EXPECT_EQ(dvb(" \u0301"), "\x15 \u0301");
  EXPECT_EQ(dvb("и\u0306"), "\x15и\u0306");
}

TEST(DvbText, WritesANewlineAsTheControlCodeOfItsEncoding) {
  EXPECT_EQ(dvb("one\ntwo"), "one\x8Atwo");
  EXPECT_EQ(dvb("Россия\n1"),
            "\x01\xC0\xDE\xE1\xE1\xD8\xEF\x8A"
            "1");
  EXPECT_EQ(dvb("中\n文"), "\x15中\uE08A文");
}

TEST(DvbText, KeepsDvbsOwnLineBreak) {
  EXPECT_EQ(dvb("one\uE08Atwo"), "one\x8Atwo");
}

TEST(DvbText, MayBeginWithALineBreak) {
  EXPECT_EQ(dvb("\nname"), "\x8Aname");
}

TEST(DvbText, LeavesOutEveryOtherControlCharacter) {
  std::string controls;
  for (char control = 0; control < ' '; ++control) {
    if (control != '\n') {
      controls += control;
    }
  }
  EXPECT_EQ(dvb("A" + controls +
                "B\x7F"
                "C"),
            "ABC");
  EXPECT_EQ(dvb("one\r\ntwo"), "one\x8Atwo");
  EXPECT_EQ(dvb("A\0B"s), "AB");
}

TEST(DvbText, LeavesOutTheControlsAboveAscii) {
  EXPECT_EQ(dvb("A\u0080\u0086\u0087\u008A\u009F"
                "B"),
            "AB");
  EXPECT_EQ(dvb("A\uE080\uE086\uE087\uE09F"
                "B"),
            "AB");
  EXPECT_EQ(dvb("中\u0086\uE086文"), "\x15中文");
}

TEST(DvbText, CannotBeMadeToBeginWithASelectorOfItsOwn) {
  for (char selector = 1; selector < ' '; ++selector) {
    if (selector != '\n') {
      EXPECT_EQ(dvb(std::string(1, selector) + "Name"), "Name");
    }
  }
  EXPECT_EQ(dvb("\x10\0\x05Name"s), "Name");
}

TEST(DvbText, OfControlsAloneIsNothing) {
  EXPECT_EQ(dvb("\t\r\0\x15"s), "");
}

TEST(DvbText, MayBeLong) {
  std::string name;
  for (int repetition = 0; repetition < 20'000; ++repetition) {
    name += "中e\u0301";
  }
  const std::string text = dvb(name);
  EXPECT_EQ(text.size(), 1 + 20'000 * (3 + 2));
  EXPECT_EQ(text.substr(0, 6), "\x15中é");
}

TEST(DvbText, OutputMayBeTheInput) {
  std::string text = "España";
  EXPECT_TRUE(dvbTextFromUTF8(text, text));
  EXPECT_EQ(text, "Espa\xC4na");
}

}  // namespace
}  // namespace tevra
