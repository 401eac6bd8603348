#include <algorithm>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

/** Not std::isalpha, which asks the locale. */
bool isLetter(char character) {
  return (character >= 'A' && character <= 'Z') || (character >= 'a' && character <= 'z');
}

}  // namespace

bool getEnglishAudioCode(const std::string& code, std::string& englishCode, std::string& other) {
  if (code.size() != 3 || !std::all_of(code.begin(), code.end(), isLetter)) {
    return false;
  }
  other = code;
  englishCode = code;
  return true;
}

}  // namespace tevra
