#include "tools/text/words.h"

#include <algorithm>
#include <iomanip>
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
