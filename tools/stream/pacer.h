#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>

#include "tools/stream/running_clock.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Holds a stream back to the speed at which it was made, by the PCRs of the first PID that has any.
 *
 * Where the clock jumps, by its discontinuity_indicator or by more than a PCR interval can be, the
 * stream goes on at once.
 */
class Pacer {
 public:
  /** Waits until so much time has passed since the first PCR. */
  using Wait = std::function<void(std::chrono::nanoseconds sinceStart)>;

  /** Waits by the machine's clock. */
  Pacer();
  /** Waits by `wait`. */
  explicit Pacer(Wait wait);

  /** Returns when the packet's time has come. */
  void pace(const TsPacket& packet);

 private:
  Wait wait_;
  RunningClock clock_;
  std::optional<int64_t> start_;  // the first PCR's time
};

}  // namespace tevra::tools
