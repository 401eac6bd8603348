#include "tools/outputs/table_repetition.h"

#include "tools/stream/ts_packet.h"

namespace tevra::tools {
namespace {

// Tables are inserted where a packet lies, and a receiver takes them for as much as a PCR interval
// (at most 40 ms, ETSI TR 101 154) earlier, since it spreads the packets between two PCRs evenly:
// less than what is allowed by that.
constexpr int64_t kPatAndPmtInterval = kSystemClock * 6 / 100;
constexpr int64_t kSdtInterval = kSystemClock * 9 / 10;

/** Whether waiting until `horizon` would be too long; if so they go out at `time`. */
bool isDue(std::optional<int64_t>& last, int64_t interval, int64_t time, int64_t horizon) {
  if (last && horizon - *last < interval) {
    return false;
  }
  last = time;
  return true;
}

}  // namespace

TableRepetition::Due TableRepetition::before(int64_t time, int64_t horizon) {
  return {isDue(patAndPmt_, kPatAndPmtInterval, time, horizon),
          isDue(sdt_, kSdtInterval, time, horizon)};
}

}  // namespace tevra::tools
