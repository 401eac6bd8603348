#include "tools/outputs/language_codes.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tevra::tools {
namespace {

/** Bibliographic and terminological code. */
constexpr std::array<std::pair<const char*, const char*>, 20> kPairs = {{
    {"alb", "sqi"}, {"arm", "hye"}, {"baq", "eus"}, {"bur", "mya"}, {"chi", "zho"},
    {"cze", "ces"}, {"dut", "nld"}, {"fre", "fra"}, {"geo", "kat"}, {"ger", "deu"},
    {"gre", "ell"}, {"ice", "isl"}, {"mac", "mkd"}, {"mao", "mri"}, {"may", "msa"},
    {"per", "fas"}, {"rum", "ron"}, {"slo", "slk"}, {"tib", "bod"}, {"wel", "cym"},
}};

/** The letters of ASCII alone, whatever the locale. */
std::string inLowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
  });
  return text;
}

/** The first `count` letters of a text in lower case made capitals. */
std::string withCapitals(std::string text, size_t count) {
  for (size_t i = 0; i < std::min(count, text.size()); ++i) {
    text[i] = text[i] >= 'a' && text[i] <= 'z' ? static_cast<char>(text[i] - 'a' + 'A') : text[i];
  }
  return text;
}

/** In lower case, the one that is given first. */
std::vector<std::string> bothCodes(const std::string& code) {
  const std::string lower = inLowerCase(code);
  for (const auto& [bibliographic, terminological] : kPairs) {
    if (lower == bibliographic || lower == terminological) {
      return {lower, lower == bibliographic ? terminological : bibliographic};
    }
  }
  return {lower};
}

}  // namespace

bool isSameLanguage(const std::string& one, const std::string& other) {
  const std::vector<std::string> codes = bothCodes(one);
  return std::count(codes.begin(), codes.end(), inLowerCase(other)) != 0;
}

std::vector<std::string> codesToAskFor(const std::string& language,
                                       const std::vector<std::string>& streamCodes) {
  std::vector<std::string> codes = {language};
  const auto add = [&codes](const std::string& code) {
    if (std::count(codes.begin(), codes.end(), code) == 0) {
      codes.push_back(code);
    }
  };
  for (const std::string& code : bothCodes(language)) {
    add(code);
    for (const size_t capitals : {code.size(), size_t{1}}) {
      if (streamCodes.empty()) {
        add(withCapitals(code, capitals));
      }
    }
  }
  for (const std::string& code : streamCodes) {
    if (isSameLanguage(language, code)) {
      add(code);
    }
  }
  return codes;
}

std::string languageText(const std::string& code) {
  const std::vector<std::string> codes = bothCodes(code);
  return codes.size() == 1 ? code : code + "/" + codes[1];
}

}  // namespace tevra::tools
