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
  const std::optional<int64_t> pcr = packet.pcr();
  if (!pcr || packet.pid() != pid_.value_or(packet.pid())) {
    return;
  }
  if (pid_ && !packet.discontinuity()) {
    elapsed_ += pcrInterval(lastPcr_, *pcr);
  }
  pid_ = packet.pid();
  lastPcr_ = *pcr;
  wait_(toTime(elapsed_));
}

}  // namespace tevra::tools
