#pragma once

#include <cstdint>

#include "tools/stream/running_clock.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * How long the tables of a transport stream are waited for: two seconds of the stream, within which
 * each must have come (ETSI TR 101 211, 4.4.1), by the PCRs of the first PID that has any; without
 * PCRs 50,000 packets, which are so much of 40 Mbit/s.
 */
class TableWait {
 public:
  /** Whether it is over before the next packet. */
  [[nodiscard]] bool isOverBefore(const TsPacket& packet);

 private:
  RunningClock clock_;
  int64_t ticks_ = 0;  // by PCRs; what came before two of them does not count
  int64_t last_ = 0;
  uint64_t packets_ = 0;
};

}  // namespace tevra::tools
