#pragma once

#include <iconv.h>

#include <optional>
#include <string>

namespace tevra::host {

/**
 * A conversion of iconv(3), without transliteration. Not to be shared between threads.
 *
 * A character set that the machine does not have converts nothing.
 */
class CharacterConverter {
 public:
  /** Names of character sets as iconv(3) knows them. */
  CharacterConverter(const char* to, const char* from);
  ~CharacterConverter();
  CharacterConverter(const CharacterConverter&) = delete;
  CharacterConverter& operator=(const CharacterConverter&) = delete;

  /** All of `input`, or nothing where a part of it is invalid, incomplete or lacking in the target
   * set. */
  [[nodiscard]] std::optional<std::string> convert(const std::string& input);

 private:
  iconv_t descriptor_;
};

/** Converts to code points, one per element; nothing where the input holds anything else. */
class CharacterDecoder {
 public:
  /** The name of a character set as iconv(3) knows it. */
  explicit CharacterDecoder(const char* from) : converter_("WCHAR_T", from) {}

  /** All of `input`, or nothing where a part of it is invalid or incomplete. */
  [[nodiscard]] std::optional<std::wstring> decode(const std::string& input);

 private:
  CharacterConverter converter_;
};

/** UTF-8 of code points that CharacterDecoder gave. */
[[nodiscard]] std::string utf8FromCodePoints(const std::wstring& text);

}  // namespace tevra::host
