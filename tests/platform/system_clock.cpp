#include "tests/platform/system_clock.h"

#include <atomic>
#include <chrono>
#include <ctime>

namespace tevra::test {
namespace {

constexpr int64_t kRunning = -1;
std::atomic<int64_t> stoppedAt = kRunning;

std::time_t clockNow() {
  const int64_t stopped = stoppedAt;
  return stopped == kRunning
             ? std::chrono::system_clock::to_time_t(std::chrono::system_clock::now())
             : static_cast<std::time_t>(stopped);
}

}  // namespace

StoppedClock::StoppedClock(int64_t seconds) {
  stoppedAt = seconds;
}

StoppedClock::~StoppedClock() {
  stoppedAt = kRunning;
}

}  // namespace tevra::test

// The linker sends calls of time here; the second name is that of the 64-bit clock on a 32-bit
// machine.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

std::time_t __wrap_time(std::time_t* out) {
  const std::time_t now = tevra::test::clockNow();
  if (out != nullptr) {
    *out = now;
  }
  return now;
}

std::time_t __wrap___time64(std::time_t* out) {
  return __wrap_time(out);
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
