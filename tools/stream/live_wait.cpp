#include "tools/stream/live_wait.h"

namespace tevra::tools {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds kSlice(200);

}  // namespace

bool waitFor(const LiveOptions& live,
             const std::function<bool(std::chrono::milliseconds most)>& comes) {
  const auto start = Clock::now();
  while (!live.stopped()) {
    if (comes(kSlice)) {
      return true;
    }
    if (live.onSilence) {
      live.onSilence(std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - start));
    }
  }
  return false;
}

}  // namespace tevra::tools
