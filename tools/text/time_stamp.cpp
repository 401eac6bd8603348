#include "tools/text/time_stamp.h"

#include <algorithm>
#include <array>
#include <ctime>

namespace tevra::tools {
namespace {

using TimePoint = std::chrono::system_clock::time_point;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr size_t kBufferSize = 64;
constexpr size_t kOffsetHours = 3;  // characters of "+01" in "+0100"

std::tm brokenDown(TimePoint time, Zone zone) {
  const std::time_t whole = std::chrono::floor<seconds>(time).time_since_epoch().count();
  std::tm parts{};
  if (zone == Zone::kUtc) {
    gmtime_r(&whole, &parts);
  } else {
    localtime_r(&whole, &parts);
  }
  return parts;
}

std::string formatted(const char* format, const std::tm& parts) {
  std::array<char, kBufferSize> text{};
  return {text.data(), std::strftime(text.data(), text.size(), format, &parts)};
}

/** ".123" */
std::string fraction(TimePoint time) {
  const auto count =
      std::chrono::floor<milliseconds>(time - std::chrono::floor<seconds>(time)).count();
  return "." + std::to_string(1000 + count).substr(1);
}

std::string offset(const std::tm& parts) {
  std::string text = formatted("%z", parts);
  return text.insert(std::min(kOffsetHours, text.size()), ":");
}

}  // namespace

std::string timeStamp(TimePoint time, Zone zone) {
  return formatted("%Y-%m-%d %H:%M:%S", brokenDown(time, zone)) + fraction(time);
}

std::string isoTimeStamp(TimePoint time, Zone zone) {
  const std::tm parts = brokenDown(time, zone);
  return formatted("%Y-%m-%dT%H:%M:%S", parts) + fraction(time) +
         (zone == Zone::kUtc ? "Z" : offset(parts));
}

}  // namespace tevra::tools
