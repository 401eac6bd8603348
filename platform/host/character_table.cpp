#include "platform/host/character_table.h"

#include <utility>

#include "platform/host/character_converter.h"

namespace tevra::host {
namespace {

using CharacterBytes = std::map<wchar_t, std::string>;

bool addCharacter(CharacterBytes& characters, CharacterDecoder& decoder, const std::string& bytes) {
  const std::optional<std::wstring> text = decoder.decode(bytes);
  const bool one = text && text->size() == 1;
  if (one) {
    characters.emplace(text->front(), bytes);
  }
  return one;
}

/** The characters above ASCII. Where a byte is none, it may be one with the next: a diacritic and
 * its letter. */
void addUpperHalf(CharacterBytes& characters, CharacterDecoder& decoder) {
  for (int first = 0xA0; first <= 0xFF; ++first) {
    const std::string byte(1, static_cast<char>(first));
    if (!addCharacter(characters, decoder, byte)) {
      for (char second = ' '; second <= '~'; ++second) {
        addCharacter(characters, decoder, byte + second);
      }
    }
  }
}

}  // namespace

CharacterTable::CharacterTable(std::string selector, const char* iconvName,
                               const std::vector<Difference>& differences)
    : selector_(std::move(selector)) {
  CharacterDecoder decoder(iconvName);
  addUpperHalf(bytes_, decoder);
  for (const Difference& difference : differences) {
    bytes_.erase(difference.character);
    if (!difference.bytes.empty()) {
      bytes_.emplace(difference.character, difference.bytes);
    }
  }
  for (char ascii = ' '; ascii <= '~'; ++ascii) {
    bytes_[static_cast<wchar_t>(ascii)] = ascii;
  }
  bytes_[L'\n'] = '\x8A';
}

std::optional<std::string> CharacterTable::encode(const std::wstring& text) const {
  std::string encoded = text.empty() ? "" : selector_;
  for (const wchar_t character : text) {
    const auto found = bytes_.find(character);
    if (found == bytes_.end()) {
      return std::nullopt;
    }
    encoded += found->second;
  }
  return encoded;
}

/*
 * Table 00 is ISO/IEC 6937 with the euro sign. The one-byte selectors stand for ISO/IEC 8859; parts
 * 1 to 4 have none (0x10 0x00 N would select them, but many readers of a name stop at a zero byte),
 * nor do they need one: table 00 holds all that they do, but for one letter that part 10 has. It
 * also holds all of parts 9 and 15, so their selectors 0x05 and 0x0B would never be used.
 *
 * A character is left out where its byte is sure only with the newest edition of a part: receivers
 * follow the edition that their maker had.
 */
const std::vector<CharacterTable>& characterTables() {
  static const std::vector<CharacterTable> tables = {
      {"",
       "ISO6937",
       {
           {L'\u20AC', "\xA4"},  // Euro sign: DVB's addition, which iconv does not know.
           {L'\u0110', "\xE2"},  // D with stroke shares its place, as its shape, with Eth.
           {L'\u2015', "\xD0"},  // So do the horizontal bar and the em dash.
           {L'\u0123', ""},  // g with cedilla: cedilla + g, or acute + g as older editions have it.
       }},
      {"\x01", "ISO-8859-5", {}},
      {"\x02", "ISO-8859-6", {}},
      // Euro, drachma and iota subscript came with the edition of 2003.
      {"\x03", "ISO-8859-7", {{L'\u20AC', ""}, {L'\u20AF', ""}, {L'\u037A', ""}}},
      // The direction marks came with the edition of 1999.
      {"\x04", "ISO-8859-8", {{L'\u200E', ""}, {L'\u200F', ""}}},
      {"\x06", "ISO-8859-10", {}},
      {"\x07", "ISO-8859-11", {}},
      {"\x09", "ISO-8859-13", {}},
      {"\x0A", "ISO-8859-14", {}},
  };
  return tables;
}

}  // namespace tevra::host
