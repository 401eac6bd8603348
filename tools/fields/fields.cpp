#include "tools/fields/fields.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

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

}  // namespace

Field idField(const std::string& name, int value) {
  return {name, Number{value, std::to_string(value) + " (" + hex(value, 4) + ")", {}}};
}

Field decimalField(const std::string& name, int64_t value) {
  return {name, Number{value, std::to_string(value), {}}};
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
