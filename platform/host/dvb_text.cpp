#include <algorithm>
#include <array>
#include <optional>
#include <string>

#include "platform/dvb_utils.h"
#include "platform/host/character_converter.h"
#include "platform/host/character_table.h"

namespace tevra {
namespace {

/** CR/LF among the control codes that EN 300 468 annex A puts into the private use area. */
constexpr wchar_t kControlLineBreak = L'\uE08A';

bool within(wchar_t character, wchar_t first, wchar_t last) {
  return character >= first && character <= last;
}

/** Control codes of Unicode, and those of DVB (emphasis and the reserved ones). */
bool isControl(wchar_t character) {
  return within(character, L'\0', L'\x1F') || within(character, L'\x7F', L'\x9F') ||
         within(character, L'\uE080', L'\uE09F');
}

/** Only line breaks stay, as newlines: a name must not carry a selector or switch anything. */
std::wstring withoutControls(const std::wstring& text) {
  std::wstring kept;
  for (const wchar_t character : text) {
    if (character == L'\n' || character == kControlLineBreak) {
      kept += L'\n';
    } else if (!isControl(character)) {
      kept += character;
    }
  }
  return kept;
}

struct Diacritic {
  wchar_t combining;
  char iso6937;
};

constexpr std::array<Diacritic, 13> kDiacritics = {{
    {L'\u0300', '\xC1'},  // grave
    {L'\u0301', '\xC2'},  // acute
    {L'\u0302', '\xC3'},  // circumflex
    {L'\u0303', '\xC4'},  // tilde
    {L'\u0304', '\xC5'},  // macron
    {L'\u0306', '\xC6'},  // breve
    {L'\u0307', '\xC7'},  // dot above
    {L'\u0308', '\xC8'},  // diaeresis
    {L'\u030A', '\xCA'},  // ring
    {L'\u0327', '\xCB'},  // cedilla
    {L'\u030B', '\xCD'},  // double acute
    {L'\u0328', '\xCE'},  // ogonek
    {L'\u030C', '\xCF'},  // caron
}};

bool isBasicLetter(wchar_t character) {
  return within(character, L'A', L'Z') || within(character, L'a', L'z');
}

const Diacritic* findDiacritic(wchar_t character) {
  const auto* const entry =
      std::find_if(kDiacritics.begin(), kDiacritics.end(),
                   [&](const auto& diacritic) { return diacritic.combining == character; });
  return entry == kDiacritics.end() ? nullptr : entry;
}

/**
 * Makes one character of a letter and the mark after it, by the combinations that ISO/IEC 6937
 * lists. Some keyboards and file systems write the two where others write the one; viewers see no
 * difference.
 */
std::wstring composed(const std::wstring& text) {
  std::optional<host::CharacterDecoder> iso6937;  // Costly to open, and seldom needed.
  std::wstring result;
  for (const wchar_t character : text) {
    const Diacritic* diacritic = findDiacritic(character);
    std::optional<std::wstring> both;
    if (diacritic != nullptr && !result.empty() && isBasicLetter(result.back())) {
      if (!iso6937) {
        iso6937.emplace("ISO6937");
      }
      // Unlike Unicode, ISO/IEC 6937 has the diacritic first.
      both = iso6937->decode({diacritic->iso6937, static_cast<char>(result.back())});
    }
    if (both) {
      result.pop_back();
    }
    result += both.value_or(std::wstring(1, character));
  }
  return result;
}

/** Every character there is, with selector 0x15. */
std::string encodeAsUtf8(std::wstring text) {
  std::replace(text.begin(), text.end(), L'\n', kControlLineBreak);
  return "\x15" + host::utf8FromCodePoints(text);
}

std::string encodeInFirstFitting(const std::wstring& text) {
  for (const host::CharacterTable& table : host::characterTables()) {
    if (const auto encoded = table.encode(text)) {
      return *encoded;
    }
  }
  return encodeAsUtf8(text);
}

/** The same bytes in UTF-8 and in DVB's default table. */
bool isPrintableAscii(const std::string& text) {
  return std::all_of(text.begin(), text.end(),
                     [](char character) { return character >= ' ' && character <= '~'; });
}

}  // namespace

bool dvbTextFromUTF8(const std::string& utf8, std::string& dvb) {
  if (isPrintableAscii(utf8)) {
    dvb = utf8;
    return true;
  }
  const auto characters = host::CharacterDecoder("UTF-8").decode(utf8);
  if (!characters) {
    return false;
  }
  dvb = encodeInFirstFitting(composed(withoutControls(*characters)));
  return true;
}

}  // namespace tevra
