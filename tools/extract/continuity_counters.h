#pragma once

#include <cstdint>
#include <vector>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * The continuity counters of an output (ISO/IEC 13818-1, 2.4.3.3), which run on whatever each PID
 * is made of, now and before.
 */
class ContinuityCounters {
 public:
  ContinuityCounters() : pids_(kPidCount) {}

  /** Makes `packet` the next one of its PID. */
  void number(TsPacket& packet);
  /** Leaves `packet` the counter of its stream, moved by as much as the stream's first was. */
  void carry(TsPacket& packet);
  /** What comes on the PID from now on is another stream. */
  void change(int pid);
  /** The same of all PIDs. */
  void changeAll();

 private:
  struct Counter {
    uint8_t next = 0;    // of a packet with payload
    uint8_t offset = 0;  // of a stream that is carried
    bool isUsed = false;
    bool isAligned = false;  // offset is that of the stream which is there
  };

  Counter& of(const TsPacket& packet) { return pids_[static_cast<size_t>(packet.pid())]; }

  std::vector<Counter> pids_;
};

}  // namespace tevra::tools
