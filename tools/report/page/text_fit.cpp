#include "tools/report/page/text_fit.h"

#include <cstring>

#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

// As DejaVu Sans has them, the widest of the usual fonts.
constexpr double kNarrow = 0.34;
constexpr double kSlim = 0.42;
constexpr double kUsual = 0.63;
constexpr double kCapital = 0.74;
constexpr double kWide = 1.0;
constexpr double kFull = 1.05;  // ideographs, and all that is not known

constexpr const char* kEllipsis = "\xE2\x80\xA6";
constexpr double kEllipsisWidth = 0.9;

double asciiWidth(char character) {
  if (std::strchr(" ',./:;I\\ijl|", character) != nullptr) {
    return kNarrow;
  }
  if (std::strchr("!\"()*-[]`frt{}", character) != nullptr) {
    return kSlim;
  }
  if (std::strchr("MW@%mw", character) != nullptr) {
    return kWide;
  }
  return character >= 'A' && character <= 'Z' ? kCapital : kUsual;
}

/** Of a character beyond ASCII by its first byte: below U+0800 are alphabets. */
double otherWidth(unsigned char lead) {
  return lead < 0xE0 ? kCapital : kFull;
}

double widthAt(std::string_view utf8, size_t at) {
  if (isContinuation(utf8[at])) {
    return 0;  // counted with the first byte of its character
  }
  const auto byte = static_cast<unsigned char>(utf8[at]);
  return byte < 0x80 ? asciiWidth(utf8[at]) : otherWidth(byte);
}

}  // namespace

double textWidth(std::string_view utf8) {
  double width = 0;
  for (size_t at = 0; at < utf8.size(); ++at) {
    width += widthAt(utf8, at);
  }
  return width;
}

std::string fitted(const std::string& utf8, double width, double fontSize) {
  const double room = width / fontSize;
  if (textWidth(utf8) <= room) {
    return utf8;
  }
  double taken = kEllipsisWidth;
  size_t end = 0;
  while (end < utf8.size() && taken + widthAt(utf8, end) <= room) {
    taken += widthAt(utf8, end++);  // the bytes behind the first of a character have no width
  }
  std::string kept = utf8.substr(0, end);
  kept.erase(kept.find_last_not_of(' ') + 1);
  return kept.empty() ? kept : kept + kEllipsis;
}

}  // namespace tevra::tools::report
