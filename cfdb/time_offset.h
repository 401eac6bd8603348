#pragma once

#include <cstdint>

#include "platform/mutex.h"
#include "records/records.h"

namespace tevra {

/**
 * How far the broadcast clock, which the TOT tells, is ahead of the system clock. Callable from any
 * thread; the lock is held for one read or one change.
 */
class TimeOffset {
 public:
  /** DVB time minus system time, in seconds; 0 before the first TOT. */
  [[nodiscard]] int64_t timeOffset() EXCLUDES(timeMutex_);

  /** False until a TOT has met a set system clock. */
  [[nodiscard]] bool timeOffsetValid() EXCLUDES(timeMutex_);

  /**
   * Takes the offset that `tot` gives, if it differs by 60 s or more from the one in use, which is
   * logged at level 4. True when the stored EITs must be restamped: after such a change, with the
   * first TOT since start or reset, and until noteRestamped() says that it has been done. While the
   * system clock is not set a TOT changes nothing and is told of at level 4.
   */
  [[nodiscard]] bool updateTimeOffset(const TOT& tot) EXCLUDES(timeMutex_);

  /** The stored EITs have been restamped. */
  void noteRestamped() EXCLUDES(timeMutex_);

  /** As at start. */
  void resetTimeOffset() EXCLUDES(timeMutex_);

 private:
  Mutex timeMutex_;
  bool timeOffsetValid_ GUARDED_BY(timeMutex_) = false;
  int64_t timeOffset_ GUARDED_BY(timeMutex_) = 0;
  bool timeOffsetPending_ GUARDED_BY(timeMutex_) = true;  ///< the next TOT restamps in any case
};

}  // namespace tevra
