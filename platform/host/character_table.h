#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace tevra::host {

/** A single-byte character table of EN 300 468 annex A. Unchanging, so that threads may share it.
 */
class CharacterTable {
 public:
  /** A character that DVB's table has in another place than iconv's character set, or may have. */
  struct Difference {
    wchar_t character;  ///< its code point
    std::string bytes;  ///< In DVB's table; empty: the character counts as lacking.
  };

  /** `selector` is what a text in this table begins with; empty for table 00. */
  CharacterTable(std::string selector, const char* iconvName,
                 const std::vector<Difference>& differences);

  /**
   * The text with its selector, or nothing when the table lacks one of its characters.
   * `text` holds no control characters but the newline, which becomes CR/LF (0x8A).
   */
  [[nodiscard]] std::optional<std::string> encode(const std::wstring& text) const;

 private:
  std::string selector_;
  std::map<wchar_t, std::string> bytes_;
};

/** The tables in the order in which to try them. */
[[nodiscard]] const std::vector<CharacterTable>& characterTables();

}  // namespace tevra::host
