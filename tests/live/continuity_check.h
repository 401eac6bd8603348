#pragma once

#include <cstdint>
#include <map>

#include "tests/live/faults.h"
#include "tests/live/stamp.h"
#include "tools/stream/ts_packet.h"

namespace tevra::test {

/** Holds the continuity counters of each PID of a stream against ISO/IEC 13818-1, 2.4.3.3, as a
 * receiver does for which no packet comes twice. */
class ContinuityCheck {
 public:
  /** What is wrong goes to `faults`, which must outlive this. */
  explicit ContinuityCheck(Faults& faults) : faults_(faults) {}

  /** The next packet; `stream` is what its PID carries. Where that is another than before, counting
   * begins anew. */
  void take(const tools::TsPacket& packet, const StreamId& stream);
  /** Packets are missing that this was never given. */
  void forget() { last_.clear(); }

 private:
  struct Last {
    StreamId stream;
    int counter;
  };

  Faults& faults_;
  std::map<int, Last> last_;  // by PID
};

}  // namespace tevra::test
