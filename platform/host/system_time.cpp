#include "platform/host/system_time.h"

#include <ctime>

#include "platform/dvb_utils.h"
#include "platform/host/environment.h"
#include "platform/module_utils.h"

namespace tevra::host {
namespace {

constexpr int64_t kSecondsPerDay = 86400;
constexpr int64_t kModifiedJulianDateOf1970 = 40587;

uint64_t twoDigits(int64_t value) {
  return bin_2_bcd4(static_cast<uint8_t>(value));
}

}  // namespace

uint64_t dvbTimeFromUnix(int64_t seconds) {
  int64_t days = seconds / kSecondsPerDay;
  int64_t secondOfDay = seconds % kSecondsPerDay;
  if (secondOfDay < 0) {
    secondOfDay += kSecondsPerDay;
    --days;
  }
  const int64_t modifiedJulianDate = days + kModifiedJulianDateOf1970;
  if (modifiedJulianDate < 0) {
    return 0;
  }
  return static_cast<uint64_t>(modifiedJulianDate) << 24 | twoDigits(secondOfDay / 3600) << 16 |
         twoDigits(secondOfDay / 60 % 60) << 8 | twoDigits(secondOfDay % 60);
}

}  // namespace tevra::host

extern "C" {

uint64_t GetUTCTime(void) {
  return tevra::host::dvbTimeFromUnix(std::time(nullptr));
}

int IsSystemTimeSet(void) {
  const bool set = tevra::host::environmentNumber("TEVRA_SYSTEM_TIME_SET", 1) != 0;
  return set ? 0 : 1;
}

}  // extern "C"
