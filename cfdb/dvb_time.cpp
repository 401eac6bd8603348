#include "cfdb/dvb_time.h"

#include <algorithm>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

constexpr int64_t kSecondsPerMinute = 60;
constexpr int64_t kSecondsPerHour = 3600;
constexpr int64_t kSecondsPerDay = 86400;
constexpr unsigned kDateShift = 24;
constexpr unsigned kHourShift = 16;
constexpr unsigned kMinuteShift = 8;

int64_t fromBcd(uint64_t time, unsigned shift) {
  return bcd4_2_bin(static_cast<uint8_t>(time >> shift));
}

uint64_t toBcd(int64_t value, unsigned shift) {
  return static_cast<uint64_t>(bin_2_bcd4(static_cast<uint8_t>(value))) << shift;
}

/** Seconds since MJD 0. The date has at most 40 bits, so the result has less than 58. */
int64_t toSeconds(uint64_t time) {
  return static_cast<int64_t>(time >> kDateShift) * kSecondsPerDay +
         fromBcd(time, kHourShift) * kSecondsPerHour +
         fromBcd(time, kMinuteShift) * kSecondsPerMinute + fromBcd(time, 0);
}

}  // namespace

int64_t dvbTimeDifference(uint64_t a, uint64_t b) {
  return toSeconds(b) - toSeconds(a);
}

uint64_t restampDVBTime(uint64_t time, int64_t offset) {
  const int64_t seconds = std::max<int64_t>(toSeconds(time) - offset, 0);
  const int64_t ofDay = seconds % kSecondsPerDay;
  return static_cast<uint64_t>(seconds / kSecondsPerDay) << kDateShift |
         toBcd(ofDay / kSecondsPerHour, kHourShift) |
         toBcd(ofDay % kSecondsPerHour / kSecondsPerMinute, kMinuteShift) |
         toBcd(ofDay % kSecondsPerMinute, 0);
}

}  // namespace tevra
