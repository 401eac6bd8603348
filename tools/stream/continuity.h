#pragma once

#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * The continuity counters of one PID, which must not be that of null packets, as they come
 * (ISO/IEC 13818-1, 2.4.3.3): only payload moves the counter, and a packet may come twice, with
 * none of its PID between.
 */
class Continuity {
 public:
  /**
   * Whether the next packet of the PID does not follow the last one: packets are lost, out of
   * order, or come more than twice. What a packet announces that way is none, nor what follows one
   * that is flagged as damaged.
   */
  [[nodiscard]] bool breaksAt(const TsPacket& packet);

 private:
  int lastCounter_ = -1;     // none yet
  bool repeatable_ = false;  // the next packet may repeat the last one
  TsPacket last_;            // with payload
};

}  // namespace tevra::tools
