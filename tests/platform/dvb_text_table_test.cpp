#include <gtest/gtest.h>
#include <iconv.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

/** Table 00, upper half (EN 300 468 figure A.1), row by row. A blank is a place without a character
 * of its own. */
const std::array<const char32_t*, 6> kTable00 = {
    U"\u00A0\u00A1\u00A2\u00A3\u20AC\u00A5 "
    U"\u00A7\u00A4\u2018\u201C\u00AB\u2190\u2191\u2192\u2193",  // A0
    U"\u00B0\u00B1\u00B2\u00B3\u00D7\u00B5\u00B6\u00B7\u00F7\u2019\u201D\u00BB\u00BC\u00BD"
    U"\u00BE\u00BF",      // B0
    U"                ",  // C0: diacritics
    U"\u2015\u00B9\u00AE\u00A9\u2122\u266A\u00AC\u00A6    \u215B\u215C\u215D\u215E",  // D0
    U"\u2126\u00C6\u0110\u00AA\u0126 "
    U"\u0132\u013F\u0141\u00D8\u0152\u00BA\u00DE\u0166\u014A\u0149",  // E0
    U"\u0138\u00E6\u0111\u00F0\u0127\u0131\u0133\u0140\u0142\u00F8\u0153\u00DF\u00FE\u0167"
    U"\u014B\u00AD",  // F0
};

struct Diacritic {
  unsigned char byte;
  const char* letters;
  const char32_t* characters;
};

/** The letters that ISO/IEC 6937 allows behind each diacritic. */
const std::array<Diacritic, 13> kDiacritics = {{
    {0xC1, "AEIOUaeiou", U"ÀÈÌÒÙàèìòù"},
    {0xC2, "ACEILNORSUYZaceilnorsuyz", U"ÁĆÉÍĹŃÓŔŚÚÝŹáćéíĺńóŕśúýź"},
    {0xC3, "ACEGHIJOSUWYaceghijosuwy", U"ÂĈÊĜĤÎĴÔŜÛŴŶâĉêĝĥîĵôŝûŵŷ"},
    {0xC4, "AINOUainou", U"ÃĨÑÕŨãĩñõũ"},
    {0xC5, "AEIOUaeiou", U"ĀĒĪŌŪāēīōū"},
    {0xC6, "AGUagu", U"ĂĞŬăğŭ"},
    {0xC7, "CEGIZcegz", U"ĊĖĠİŻċėġż"},
    {0xC8, "AEIOUYaeiouy", U"ÄËÏÖÜŸäëïöüÿ"},
    {0xCA, "AUau", U"ÅŮåů"},
    {0xCB, "CGKLNRSTcklnrst", U"ÇĢĶĻŅŖŞŢçķļņŗşţ"},
    {0xCD, "OUou", U"ŐŰőű"},
    {0xCE, "AEIUaeiu", U"ĄĘĮŲąęįų"},
    {0xCF, "CDELNRSTZcdelnrstz", U"ČĎĚĽŇŘŠŤŽčďěľňřšťž"},
}};

std::string utf8Of(char32_t character) {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  if (character < 0x80) {
    return {byte(character)};
  }
  const char last = byte(0x80 | (character & 0x3F));
  if (character < 0x800) {
    return {byte(0xC0 | character >> 6), last};
  }
  const char middle = byte(0x80 | (character >> 6 & 0x3F));
  if (character < 0x10000) {
    return {byte(0xE0 | character >> 12), middle, last};
  }
  return {byte(0xF0 | character >> 18), byte(0x80 | (character >> 12 & 0x3F)), middle, last};
}

std::string dvb(char32_t character) {
  std::string text = "before";
  EXPECT_TRUE(dvbTextFromUTF8(utf8Of(character), text)) << std::hex << uint32_t{character};
  return text;
}

/** UTF-8 of a byte in an ISO 8859 part; empty where the part has no character. */
std::string utf8Of(const std::string& iso8859, unsigned char byte) {
  iconv_t converter = iconv_open("UTF-8", iso8859.c_str());
  if (reinterpret_cast<intptr_t>(converter) == -1) {
    throw std::runtime_error("no " + iso8859);
  }
  char in = static_cast<char>(byte);
  char* from = &in;
  size_t fromLeft = 1;
  std::array<char, 8> out;
  char* to = out.data();
  size_t toLeft = out.size();
  const size_t result = iconv(converter, &from, &fromLeft, &to, &toLeft);
  iconv_close(converter);
  return result == 0 ? std::string(out.data(), to) : "";
}

/** Every byte that is an ISO 8859 part's own, with its UTF-8. */
std::map<unsigned char, std::string> upperHalf(const std::string& iso8859) {
  std::map<unsigned char, std::string> characters;
  for (unsigned byte = 0xA0; byte <= 0xFF; ++byte) {
    const std::string utf8 = utf8Of(iso8859, static_cast<unsigned char>(byte));
    if (!utf8.empty()) {
      characters[static_cast<unsigned char>(byte)] = utf8;
    }
  }
  return characters;
}

TEST(DvbTextTable00, EveryCharacterOfFigureA1HasItsByte) {
  for (size_t row = 0; row < kTable00.size(); ++row) {
    for (size_t column = 0; column < 16; ++column) {
      const char32_t character = kTable00[row][column];
      if (character != U' ') {
        EXPECT_EQ(dvb(character), std::string(1, static_cast<char>(0xA0 + row * 16 + column)));
      }
    }
  }
}

TEST(DvbTextTable00, EveryAccentedLetterIsItsDiacriticThenTheLetter) {
  for (const Diacritic& diacritic : kDiacritics) {
    const std::string letters = diacritic.letters;
    const std::u32string characters = diacritic.characters;
    ASSERT_EQ(letters.size(), characters.size());
    for (size_t index = 0; index < letters.size(); ++index) {
      const std::string bytes = {static_cast<char>(diacritic.byte), letters[index]};
      EXPECT_EQ(dvb(characters[index]), bytes);
    }
  }
}

TEST(DvbTextTable00, HoldsAllOfIso8859Parts1To4And9And15ButOneLetter) {
  for (const char* part :
       {"ISO-8859-1", "ISO-8859-2", "ISO-8859-3", "ISO-8859-4", "ISO-8859-9", "ISO-8859-15"}) {
    const auto characters = upperHalf(part);
    EXPECT_GE(characters.size(), 89U) << part;
    for (const auto& [byte, utf8] : characters) {
      std::string text;
      EXPECT_TRUE(dvbTextFromUTF8(utf8, text));
      const bool selected = static_cast<unsigned char>(text.at(0)) < 0x20;
      EXPECT_EQ(selected, utf8 == "ģ") << part << " " << utf8;
    }
  }
}

/** What a receiver makes of DVB text of one character: the same in UTF-8. Throws for what is
 * unassigned. */
class Receiver {
 public:
  Receiver() {
    for (const auto& [selector, part] :
         std::vector<std::pair<char, std::string>>{{1, "ISO-8859-5"},
                                                   {2, "ISO-8859-6"},
                                                   {3, "ISO-8859-7"},
                                                   {4, "ISO-8859-8"},
                                                   {6, "ISO-8859-10"},
                                                   {7, "ISO-8859-11"},
                                                   {9, "ISO-8859-13"},
                                                   {10, "ISO-8859-14"}}) {
      tables_[selector] = upperHalf(part);
    }
    addTable00();
  }

  [[nodiscard]] std::string decode(const std::string& text) const {
    const auto first = static_cast<unsigned char>(text.at(0));
    if (first >= 0x20) {
      return first < 0x7F && text.size() == 1 ? text : table00_.at(text);
    }
    if (first == 0x15) {
      return text.substr(1);
    }
    if (text.size() != 2) {
      throw std::out_of_range("one character of a table is one byte");
    }
    return tables_.at(text.at(0)).at(static_cast<unsigned char>(text.at(1)));
  }

 private:
  void addTable00() {
    for (size_t row = 0; row < kTable00.size(); ++row) {
      for (size_t column = 0; column < 16; ++column) {
        table00_[std::string(1, static_cast<char>(0xA0 + row * 16 + column))] =
            utf8Of(kTable00[row][column]);
      }
    }
    for (const Diacritic& diacritic : kDiacritics) {
      for (size_t index = 0; diacritic.letters[index] != '\0'; ++index) {
        table00_[{static_cast<char>(diacritic.byte), diacritic.letters[index]}] =
            utf8Of(diacritic.characters[index]);
      }
    }
    addSpacingDiacritics();
  }

  /** A diacritic on a blank stands by itself. */
  void addSpacingDiacritics() {
    for (const auto& [byte, character] :
         std::vector<std::pair<char, char32_t>>{{'\xC2', U'\u00B4'},
                                                {'\xC5', U'\u00AF'},
                                                {'\xC6', U'\u02D8'},
                                                {'\xC7', U'\u02D9'},
                                                {'\xC8', U'\u00A8'},
                                                {'\xCA', U'\u02DA'},
                                                {'\xCB', U'\u00B8'},
                                                {'\xCD', U'\u02DD'},
                                                {'\xCE', U'\u02DB'},
                                                {'\xCF', U'\u02C7'}}) {
      table00_[{byte, ' '}] = utf8Of(character);
    }
  }

  std::map<std::string, std::string> table00_;
  std::map<char, std::map<unsigned char, std::string>> tables_;
};

bool isControl(char32_t character) {
  return character < 0x20 || (character >= 0x7F && character <= 0x9F) ||
         (character >= 0xE080 && character <= 0xE09F);
}

/** The two characters that share their place with another. */
std::string asReceived(char32_t character) {
  return character == U'\u00D0' ? "Đ" : character == U'\u2014' ? "―" : utf8Of(character);
}

TEST(DvbTextTables, AReceiverReadsEveryCharacterAsItWas) {
  const Receiver receiver;
  int texts = 0;
  for (char32_t character = 0x20; character <= 0x10FFFF; ++character) {
    if (isControl(character) || (character >= 0xD800 && character <= 0xDFFF)) {
      continue;
    }
    const std::string text = dvb(character);
    EXPECT_EQ(text.find('\0'), std::string::npos) << std::hex << uint32_t{character};
    EXPECT_EQ(receiver.decode(text), asReceived(character)) << std::hex << uint32_t{character};
    ++texts;
  }
  EXPECT_EQ(texts, 0x110000 - 0x800 - 0x20 - 0x21 - 0x20);  // All but surrogates and controls.
}

}  // namespace
}  // namespace tevra
