#include "tools/report/facts/stream_time.h"

#include <array>

#include "tools/text/dvb_time_text.h"

namespace tevra::tools::report {
namespace {

constexpr size_t kDateSize = 10;

/** The number of two BCD digits; nothing when it is not below `limit`. */
std::optional<int64_t> bcd(int64_t digits, int64_t limit) {
  const int64_t tens = (digits >> 4) & 0x0F;
  const int64_t ones = digits & 0x0F;
  const int64_t value = tens * 10 + ones;
  return tens > 9 || ones > 9 || value >= limit ? std::nullopt : std::optional(value);
}

std::optional<int64_t> clockOf(int64_t digits, int64_t hourLimit) {
  const auto hours = bcd(digits >> 16, hourLimit);
  const auto minutes = bcd(digits >> 8, 60);
  const auto seconds = bcd(digits, 60);
  if (!hours || !minutes || !seconds) {
    return std::nullopt;
  }
  return *hours * kHour + *minutes * kMinute + *seconds;
}

int64_t bcdOf(int64_t value) {
  return value / 10 * 16 + value % 10;
}

}  // namespace

std::optional<StreamTime> streamTime(int64_t utcTime) {
  const auto clock = clockOf(utcTime, 24);
  return clock ? std::optional(((utcTime >> 24) & 0xFFFF) * kDay + *clock) : std::nullopt;
}

std::optional<int64_t> secondsOf(int bcdDuration) {
  return clockOf(bcdDuration, 100);
}

std::string dateAndTime(StreamTime time) {
  const int64_t second = time % kDay;
  return dvbTimeText(((time / kDay) << 24) | (bcdOf(second / kHour) << 16) |
                     (bcdOf(second % kHour / kMinute) << 8) | bcdOf(second % kMinute));
}

std::string dayText(StreamTime time) {
  static constexpr std::array<const char*, 7> kDays = {"Wed", "Thu", "Fri", "Sat",
                                                       "Sun", "Mon", "Tue"};  // from 1858-11-17 on
  return std::string(kDays.at(static_cast<size_t>(time / kDay % 7))) + " " +
         dateAndTime(time).substr(0, kDateSize);
}

std::string clockText(StreamTime time) {
  return dateAndTime(time).substr(kDateSize + 1, 5);
}

std::string durationText(int64_t seconds) {
  std::string text;
  const auto add = [&text](int64_t count, const char* unit) {
    if (count != 0) {
      text += (text.empty() ? "" : " ") + std::to_string(count) + unit;
    }
  };
  add(seconds / kHour, " h");
  add(seconds % kHour / kMinute, " min");
  add(seconds % kMinute, " s");
  return text.empty() ? "0 s" : text;
}

}  // namespace tevra::tools::report
