#pragma once

#include <map>
#include <vector>

#include "tests/tools/support/faults.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::test {

/** Holds the continuity counters of each PID of a stream against ISO/IEC 13818-1, 2.4.3.3, as a
 * receiver does for which no packet comes twice. */
class ContinuityCheck {
 public:
  /** What is wrong goes to `faults`, which must outlive this. */
  explicit ContinuityCheck(Faults& faults) : faults_(faults) {}

  void take(const TsPacket& packet);
  /** Packets are missing that this was never given. */
  void forget() { last_.clear(); }

 private:
  Faults& faults_;
  std::map<int, int> last_;  // by PID
};

/** Expects that nothing is wrong with the counters of these packets. */
void expectCountersRunOn(const std::vector<TsPacket>& packets);

}  // namespace tevra::tools::test
