#include "tools/report/page/figures.h"

#include <array>
#include <cmath>

#include "tools/text/decimals.h"
#include "tools/text/dvb_time.h"

namespace tevra::tools::report {
namespace {

constexpr const char* kThinBlank = "\xE2\x80\xAF";
constexpr double kSmallestShare = 0.0005;
constexpr int kLongSeconds = 60;

}  // namespace

std::string bitRateText(double bitsPerSecond) {
  static constexpr std::array<const char*, 4> kUnits = {" bit/s", " kbit/s", " Mbit/s", " Gbit/s"};
  double value = bitsPerSecond;
  size_t unit = 0;
  while (value >= 999.5 && unit + 1 < kUnits.size()) {
    value /= 1000;
    ++unit;
  }
  const int decimals = unit == 0 || value >= 99.95 ? 0 : value >= 9.995 ? 1 : 2;
  return fixedText(value, decimals) + kUnits.at(unit);
}

std::string shareText(double share) {
  if (share > 0 && share < kSmallestShare) {
    return "<0.1 %";
  }
  return fixedText(share * 100, 1) + " %";
}

std::string groupedText(uint64_t number) {
  std::string text = std::to_string(number);
  for (size_t at = text.size(); at > 3; at -= 3) {
    text.insert(at - 3, kThinBlank);
  }
  return text;
}

std::string lengthText(double seconds) {
  return seconds < kLongSeconds ? fixedText(seconds, 2) + " s"
                                : durationText(std::llround(seconds));
}

std::string coordinate(double value) {
  std::string text = fixedText(value, 2);
  text.erase(text.find_last_not_of('0') + 1);
  if (text.back() == '.') {
    text.pop_back();
  }
  return text == "-0" ? "0" : text;
}

}  // namespace tevra::tools::report
