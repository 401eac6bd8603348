#include <algorithm>
#include <array>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

using Letters = std::array<char, 3>;

constexpr Letters letters(const char* code) {
  return {code[0], code[1], code[2]};
}

struct LanguageCode {
  constexpr LanguageCode(const char* terminologicalCode, const char* bibliographicCode)
      : terminological(letters(terminologicalCode)), bibliographic(letters(bibliographicCode)) {}

  Letters terminological;
  Letters bibliographic;
};

/** The languages to which ISO 639-2 gives two codes. */
constexpr std::array<LanguageCode, 20> kTwofoldCodes = {{
    {"bod", "tib"}, {"ces", "cze"}, {"cym", "wel"}, {"deu", "ger"}, {"ell", "gre"},
    {"eus", "baq"}, {"fas", "per"}, {"fra", "fre"}, {"hye", "arm"}, {"isl", "ice"},
    {"kat", "geo"}, {"mkd", "mac"}, {"mri", "mao"}, {"msa", "may"}, {"mya", "bur"},
    {"nld", "dut"}, {"ron", "rum"}, {"slk", "slo"}, {"sqi", "alb"}, {"zho", "chi"},
}};

bool isLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

/** Not std::tolower, which asks the locale. */
char lowerCase(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

}  // namespace

bool getEnglishAudioCode(const std::string& code, std::string& englishCode, std::string& other) {
  if (code.size() != 3 || !std::all_of(code.begin(), code.end(), isLetter)) {
    return false;
  }
  Letters lower = letters(code.c_str());
  std::transform(lower.begin(), lower.end(), lower.begin(), lowerCase);
  const auto* const entry =
      std::find_if(kTwofoldCodes.begin(), kTwofoldCodes.end(), [&](const auto& language) {
        return lower == language.terminological || lower == language.bibliographic;
      });
  const bool twofold = entry != kTwofoldCodes.end();
  const Letters& english = twofold ? entry->bibliographic : lower;
  const Letters& terminological = twofold ? entry->terminological : lower;
  englishCode.assign(english.data(), english.size());
  other.assign(terminological.data(), terminological.size());
  return true;
}

}  // namespace tevra
