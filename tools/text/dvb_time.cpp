#include "tools/text/dvb_time.h"

#include <array>
#include <cstdlib>
#include <ctime>

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int64_t kUndefinedTime = 0xFFFFFFFFFF;
constexpr int64_t kUndefinedDuration = 0xFFFFFF;
constexpr const char* kUndefined = "undefined";

/** Seconds of six digits hhmmss; nothing when they are none or there are `hourLimit` hours. */
std::optional<int64_t> secondsOf(int64_t digits, int64_t hourLimit) {
  int64_t seconds = 0;
  int64_t limit = hourLimit;
  for (const int shift : {16, 8, 0}) {
    const int64_t tens = (digits >> (shift + 4)) & 0xF;
    const int64_t ones = (digits >> shift) & 0xF;
    const int64_t value = 10 * tens + ones;
    if (tens > 9 || ones > 9 || value >= limit) {
      return std::nullopt;
    }
    seconds = 60 * seconds + value;
    limit = 60;
  }
  return seconds;
}

StreamTime midnightOf(int64_t utcTime) {
  return ((utcTime >> 24) & 0xFFFF) * kDay;
}

std::string formatted(StreamTime time, const char* format) {
  const std::time_t seconds = time - kUnixEpoch;
  std::tm parts{};
  gmtime_r(&seconds, &parts);
  std::array<char, 64> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

}  // namespace

std::optional<StreamTime> streamTime(int64_t utcTime) {
  const auto clock = secondsOf(utcTime, 24);
  return clock ? std::optional(midnightOf(utcTime) + *clock) : std::nullopt;
}

std::optional<int64_t> durationSeconds(int64_t digits) {
  return secondsOf(digits, 100);
}

std::string utcTimeText(int64_t utcTime) {
  if ((utcTime & kUndefinedTime) == kUndefinedTime) {
    return kUndefined;
  }
  return formatted(midnightOf(utcTime), "%Y-%m-%d ") + codedDigits(utcTime, 3) + " UTC";
}

std::string durationDigits(int64_t digits) {
  return (digits & kUndefinedDuration) == kUndefinedDuration ? kUndefined : codedDigits(digits, 3);
}

std::string codedDigits(int64_t digits, int pairs) {
  std::string text;
  for (int shift = 8 * (pairs - 1); shift >= 0; shift -= 8) {
    text += (text.empty() ? "" : ":") + hex((digits >> shift) & 0xFF, 2).substr(2);
  }
  return text;
}

std::string dateAndTime(StreamTime time) {
  return formatted(time, "%Y-%m-%d %H:%M:%S");
}

std::string dayText(StreamTime time) {
  return formatted(time, "%a %Y-%m-%d");
}

std::string clockText(StreamTime time) {
  return formatted(time, "%H:%M");
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

std::string spanText(int64_t seconds) {
  const StreamTime size = std::abs(seconds);
  const std::string days = size < kDay ? "" : std::to_string(size / kDay) + " d ";
  return (seconds < 0 ? "-" : "+") + days + formatted(size, "%T");
}

}  // namespace tevra::tools
