#include "tools/text/dvb_time.h"

#include <array>

namespace tevra::tools {
namespace {

/** The Modified Julian Date of 1970-01-01. */
constexpr int64_t kMjdOf1970 = 40587;
constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kSecondsPerHour = 3600;
constexpr int64_t kSecondsPerMinute = 60;

std::string twoDigits(int64_t value) {
  return (value < 10 ? "0" : "") + std::to_string(value);
}

}  // namespace

std::optional<int64_t> secondsOfDvbTime(int64_t utcTime) {
  static constexpr std::array<int64_t, 6> kUnits = {
      10 * kSecondsPerHour, kSecondsPerHour, 10 * kSecondsPerMinute, kSecondsPerMinute, 10, 1};
  int64_t seconds = (((utcTime >> 24) & 0xFFFF) - kMjdOf1970) * kSecondsPerDay;
  int shift = 20;
  for (const int64_t unit : kUnits) {
    const int64_t digit = (utcTime >> shift) & 0xF;
    if (digit > 9) {
      return std::nullopt;
    }
    seconds += digit * unit;
    shift -= 4;
  }
  return seconds;
}

std::string spanText(int64_t seconds) {
  const int64_t size = seconds < 0 ? -seconds : seconds;
  const int64_t days = size / kSecondsPerDay;
  return (seconds < 0 ? "-" : "+") + (days == 0 ? "" : std::to_string(days) + " d ") +
         twoDigits(size % kSecondsPerDay / kSecondsPerHour) + ":" +
         twoDigits(size % kSecondsPerHour / kSecondsPerMinute) + ":" +
         twoDigits(size % kSecondsPerMinute);
}

}  // namespace tevra::tools
