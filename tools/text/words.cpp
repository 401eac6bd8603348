#include "tools/text/words.h"

#include <algorithm>
#include <charconv>
#include <iomanip>
#include <limits>
#include <sstream>
#include <string_view>

namespace tevra::tools {

size_t displayWidth(const std::string& utf8) {
  return utf8.size() - static_cast<size_t>(std::count_if(utf8.begin(), utf8.end(), isContinuation));
}

std::string counted(unsigned long long count, const std::string& noun) {
  return counted(count, noun, noun + "s");
}

std::string counted(unsigned long long count, const std::string& noun, const std::string& plural) {
  return std::to_string(count) + " " + (count == 1 ? noun : plural);
}

std::optional<int64_t> wholeNumber(const std::string& text) {
  const bool isHex = text.compare(0, 2, "0x") == 0 || text.compare(0, 2, "0X") == 0;
  const char* begin = text.data() + (isHex ? 2 : 0);
  const char* end = text.data() + text.size();
  int64_t number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number, isHex ? 16 : 10);
  if (stop != end || error == std::errc::invalid_argument || (isHex && *begin == '-')) {
    return std::nullopt;
  }
  if (error == std::errc::result_out_of_range) {
    using Limits = std::numeric_limits<int64_t>;
    return *begin == '-' ? Limits::min() : Limits::max();
  }
  return number;
}

std::string hex(int64_t value, int digits) {
  std::ostringstream text;
  text << "0x" << std::hex << std::uppercase << std::setfill('0') << std::setw(digits) << value;
  return text.str();
}

std::string idText(int id) {
  return std::to_string(id) + " (" + hex(id, 4) + ")";
}

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

std::string oneLine(std::string text) {
  std::replace_if(
      text.begin(), text.end(),
      [](char c) { return static_cast<unsigned char>(c) < ' ' || c == '\x7F'; }, ' ');
  return text;
}

std::string joined(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (const std::string& part : parts) {
    text += (text.empty() ? "" : separator) + part;
  }
  return text;
}

std::string numbersText(const std::vector<int>& numbers) {
  std::vector<std::string> texts;
  texts.reserve(numbers.size());
  for (const int number : numbers) {
    texts.push_back(std::to_string(number));
  }
  return joined(texts, ", ");
}

}  // namespace tevra::tools
