#pragma once

#include <cstdint>

namespace tevra::test {

/** The system clock stands still at a moment, as std::time gives it, from construction to
 * destruction. One at a time. */
class StoppedClock {
 public:
  /** `seconds` since 1970. */
  explicit StoppedClock(int64_t seconds);
  ~StoppedClock();
  StoppedClock(const StoppedClock&) = delete;
  StoppedClock& operator=(const StoppedClock&) = delete;
};

}  // namespace tevra::test
