#include "cfdb/time_offset.h"

#include <cstdlib>

#include "cfdb/dvb_time.h"
#include "platform/module_utils.h"

namespace tevra {
namespace {

/** Differences of under a minute are a steady broadcast clock, not a new offset. */
constexpr int64_t kToleratedOffsetChange = 59;

/** Only the low 32 bits count, as on the device. */
bool isSameOffset(int64_t a, int64_t b) {
  const auto difference = static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
  return std::llabs(difference) <= kToleratedOffsetChange;
}

}  // namespace

int64_t TimeOffset::timeOffset() {
  MutexLock lock(timeMutex_);
  return timeOffset_;
}

bool TimeOffset::timeOffsetValid() {
  MutexLock lock(timeMutex_);
  return timeOffsetValid_;
}

bool TimeOffset::updateTimeOffset(const TOT& tot) {
  if (IsSystemTimeSet() != 0) {
    log_function(kLogWarning, kNoTag, "System time not set. Time offset not calculated!");
    return false;
  }
  const int64_t offset = dvbTimeDifference(GetUTCTime(), static_cast<uint64_t>(tot.utcTime));
  MutexLock lock(timeMutex_);
  bool restamp = timeOffsetPending_;
  if (!isSameOffset(offset, timeOffset_)) {
    log_function(kLogWarning, kNoTag, "DVB to System Time offset set to [%lld] secs",
                 static_cast<long long>(offset));
    timeOffset_ = offset;
    restamp = true;
  }
  timeOffsetValid_ = true;
  timeOffsetPending_ = restamp;
  return restamp;
}

void TimeOffset::noteRestamped() {
  MutexLock lock(timeMutex_);
  timeOffsetPending_ = false;
}

void TimeOffset::resetTimeOffset() {
  MutexLock lock(timeMutex_);
  timeOffset_ = 0;
  timeOffsetValid_ = false;
  timeOffsetPending_ = true;
}

}  // namespace tevra
