#include "tools/text/hex_digits.h"

#include <string_view>

namespace tevra::tools {

std::string hexDigits(const std::string& bytes) {
  static constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  text.reserve(2 * bytes.size());
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text += kDigits[byte >> 4];
    text += kDigits[byte & 0x0F];
  }
  return text;
}

}  // namespace tevra::tools
