#pragma once

#include <string>

namespace tevra::tools {

/**
 * DVB text with its character table selector (EN 300 468 annex A) as UTF-8, for people to read.
 *
 * Control codes are left out, but a line break becomes a blank. What cannot be converted becomes
 * U+FFFD; so does each byte of a text in a table that is not known.
 */
[[nodiscard]] std::string utf8FromDvbText(const std::string& text);

/** Whether all of `text` is valid UTF-8. */
[[nodiscard]] bool isUtf8(const std::string& text);

/**
 * `text` with everything that is not valid UTF-8, or is a control character, replaced by U+FFFD.
 */
[[nodiscard]] std::string printable(const std::string& text);

}  // namespace tevra::tools
