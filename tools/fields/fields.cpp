#include "tools/fields/fields.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <functional>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr std::array<std::string_view, 25> kAbbreviations = {
    "aac", "ait", "avc",  "ca",  "crid", "eit", "fec",  "gop", "gs",   "hevc", "hp",  "lcn", "lp",
    "ltw", "mpe", "nvod", "pcr", "pid",  "plp", "saoc", "sei", "siso", "ts",   "utc", "vbi"};

char toLower(char c) {
  return static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
}
char toUpper(char c) {
  return static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
}
bool isUpper(char c) {
  return std::isupper(static_cast<unsigned char>(c)) != 0;
}

std::string wordOf(const std::string& part) {
  std::string word = part;
  std::transform(word.begin(), word.end(), word.begin(), toLower);
  if (std::find(kAbbreviations.begin(), kAbbreviations.end(), word) != kAbbreviations.end()) {
    std::transform(word.begin(), word.end(), word.begin(), toUpper);
  }
  return word;
}

/** What stands in the stream of a value. */
struct Said {
  int64_t operator()(const Number& number) const { return number.value; }
  bool operator()(const Flag& flag) const { return flag.value; }
  const std::string& operator()(const Text& text) const { return text.utf8; }
  const std::string& operator()(const Time& time) const { return time.shown; }
  const std::string& operator()(const Bytes& bytes) const { return bytes.data; }
  const auto& operator()(const List& list) const { return list.entries; }
  const auto& operator()(const DescriptorLoop& loop) const { return loop.entries; }
};

/** Compares two values of one type. */
template <class Compare>
bool compared(const Field& a, const Field& b, Compare compare) {
  const auto compareWithB = [&](const auto& value) {
    return compare(Said()(value), Said()(std::get<std::decay_t<decltype(value)>>(b.value)));
  };
  return std::visit(compareWithB, a.value);
}

}  // namespace

bool operator==(const Field& a, const Field& b) {
  return a.name == b.name && a.value.index() == b.value.index() &&
         compared(a, b, std::equal_to<>());
}

bool operator<(const Field& a, const Field& b) {
  if (a.name != b.name) {
    return a.name < b.name;
  }
  return a.value.index() == b.value.index() ? compared(a, b, std::less<>())
                                            : a.value.index() < b.value.index();
}

bool operator==(const DescriptorFields& a, const DescriptorFields& b) {
  return std::tie(a.tag, a.payload) == std::tie(b.tag, b.payload);
}

bool operator<(const DescriptorFields& a, const DescriptorFields& b) {
  return std::tie(a.tag, a.payload) < std::tie(b.tag, b.payload);
}

Field idField(const std::string& name, int value, const std::string& meaning) {
  return {name, Number{value, idText(value), meaning}};
}

Field decimalField(const std::string& name, int64_t value, const std::string& meaning) {
  return {name, Number{value, std::to_string(value), meaning}};
}

Field codeField(const std::string& name, int value, const std::string& meaning) {
  return {name, Number{value, hex(value, 2), meaning}};
}

Field flagField(const std::string& name, bool value) {
  return {name, Flag{value, value ? "yes" : "no"}};
}

Field wordField(const std::string& name, bool value, const std::string& ifSet,
                const std::string& ifNot) {
  return {name, Flag{value, value ? ifSet : ifNot}, /*isLabelled=*/false};
}

Field plainField(const std::string& name, const std::string& text) {
  return {name, Text{text, /*quoted=*/false}};
}

std::string labelOf(const std::string& name) {
  std::string label;
  std::string part;
  for (const char c : name) {
    if (isUpper(c) && !part.empty() && !isUpper(part.back())) {
      label += wordOf(part) + " ";
      part.clear();
    }
    part += c;
  }
  return label + wordOf(part);
}

}  // namespace tevra::tools
