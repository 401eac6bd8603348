#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tevra::tools {

/** Whether a byte of UTF-8 text goes on with a character that an earlier one began. */
[[nodiscard]] constexpr bool isContinuation(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0) == 0x80;
}

/** How many characters UTF-8 text has. */
[[nodiscard]] size_t displayWidth(const std::string& utf8);

/** "1 packet", "2 packets". */
[[nodiscard]] std::string counted(unsigned long long count, const std::string& noun);
/** The same of a noun whose plural is another. */
[[nodiscard]] std::string counted(unsigned long long count, const std::string& noun,
                                  const std::string& plural);

/**
 * The number that a text is: decimal, whatever zeros it begins with, or hexadecimal behind "0x".
 * One of more than 64 bits is the nearest that has them; nothing for a text that is no whole
 * number.
 */
[[nodiscard]] std::optional<int64_t> wholeNumber(const std::string& text);

/** "0x" and at least `digits` hexadecimal digits; `value` is not negative. */
[[nodiscard]] std::string hex(int64_t value, int digits);
/** A PID or another 16-bit id in both ways to write it: "257 (0x0101)". */
[[nodiscard]] std::string idText(int id);

/** Two lower-case hexadecimal digits per byte. */
[[nodiscard]] std::string hexDigits(const std::string& bytes);

/** The text with a blank for every control character, so that it stays on its line. */
[[nodiscard]] std::string oneLine(std::string text);

/** The parts with `separator` between them. */
[[nodiscard]] std::string joined(const std::vector<std::string>& parts,
                                 const std::string& separator);
/** "1, 2, 3". */
[[nodiscard]] std::string numbersText(const std::vector<int>& numbers);

}  // namespace tevra::tools
