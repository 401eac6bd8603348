#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "tools/report/facts/report_data.h"
#include "tools/stream/continuity.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {

/** Counts the packets of a multiplex by PID, what is wrong with them, and reads the clock. */
class StreamCensus {
 public:
  StreamCensus();

  /** The next packet of the stream, whatever its PID. */
  void push(const TsPacket& packet);
  /** A time of the stream's clock from elsewhere: the packets are looked at for TDTs alone. */
  void noteClock(StreamTime time);

  /** All PIDs that have packets; sections are not looked at. */
  [[nodiscard]] std::map<int, PidCount> pids() const;
  ///@{
  /** Of the TDTs and the times noted, in stream order; nothing without any. */
  [[nodiscard]] std::optional<StreamTime> firstClock() const { return firstClock_; }
  [[nodiscard]] std::optional<StreamTime> lastClock() const { return lastClock_; }
  ///@}

 private:
  struct Pid {
    PidCount count;
    Continuity continuity;
    std::optional<int64_t> lastPcr;
    std::optional<int64_t> widestStep;  // between two PCRs
  };

  static void notePcr(const TsPacket& packet, Pid& pid);
  void readClock(const TsPacket& packet);

  std::vector<Pid> pids_;
  std::optional<StreamTime> firstClock_;
  std::optional<StreamTime> lastClock_;
};

}  // namespace tevra::tools::report
