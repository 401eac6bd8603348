#include "tools/stream/pacer.h"

#include <thread>
#include <utility>

namespace tevra::tools {
namespace {

std::chrono::nanoseconds toTime(int64_t ticks) {
  constexpr int64_t kMicrosecond = kSystemClock / 1'000'000;
  return std::chrono::microseconds(ticks / kMicrosecond);
}

Pacer::Wait waitByTheClock() {
  std::optional<std::chrono::steady_clock::time_point> start;
  return [start](std::chrono::nanoseconds sinceStart) mutable {
    if (!start) {
      start = std::chrono::steady_clock::now() - sinceStart;
    }
    std::this_thread::sleep_until(*start + sinceStart);
  };
}

}  // namespace

Pacer::Pacer() : Pacer(waitByTheClock()) {}

Pacer::Pacer(Wait wait) : wait_(std::move(wait)) {}

void Pacer::pace(const TsPacket& packet) {
  const int64_t time = clock_.at(packet).time;
  if (packet.pcr() && packet.pid() == clock_.pcrPid()) {
    start_ = start_.value_or(time);
    wait_(toTime(time - *start_));
  }
}

}  // namespace tevra::tools
