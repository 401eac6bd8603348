#pragma once

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "tools/outputs/table_repetition.h"
#include "tools/report/facts/packet_times.h"
#include "tools/report/facts/recurrence.h"
#include "tools/report/facts/references.h"
#include "tools/stream/running_clock.h"

namespace tevra::tools::report {

/** Of 1.3.a and 1.5.a, in 27 MHz ticks (ETSI TR 101 290, 5.2.1). */
inline constexpr int64_t kTableLimit = kSystemClock / 2;
/** Of 2.5, in 27 MHz ticks (ISO/IEC 13818-1, 2.7.4; ETSI TR 101 290, 5.2.2). */
inline constexpr int64_t kPtsLimit = kSystemClock * 7 / 10;
/** Seconds for 1.6: the most that it allows for video and audio. */
inline constexpr int kPidPeriod = 5;

/** What has to come again and again on one PID. */
struct PidIntervals {
  /** `pidPeriod` is the limit of packets, in ticks. */
  explicit PidIntervals(int64_t pidPeriod) : packets(pidPeriod) {}

  Recurrence tables{kTableLimit};  ///< PAT, PMT or SDT, whichever belongs there
  Recurrence pcrs{kPcrLimit};      ///< packets with one
  Recurrence packets;              ///< of any kind; of what had to come alone
  Recurrence ptss{kPtsLimit};      ///< PES packets with one; the same
};

/** The tables of an output, repeated as the packets of the multiplex come, by the PCRs of a PID. */
struct RepeatedTables {
  /** Of no PCR yet. */
  explicit RepeatedTables(int pcrPid) : clock(pcrPid) {}

  RunningClock clock;          ///< of the PID
  TableRepetition repetition;  ///< by that clock
  Recurrence patAndPmt;        ///< by the stream's, like all else that is measured
  Recurrence sdt;              ///< the same
};

/**
 * Measures by the stream's own clock how far apart tables, PCRs and packets come. Which outputs
 * there are is not known before its end, so that the tables of an output are repeated for each PID
 * that has PCRs and that a PMT names for them, at most kMostClocks.
 */
class StreamIntervals {
 public:
  /** PCR PIDs for whose outputs tables are repeated: more than a multiplex has room for. */
  static constexpr size_t kMostClocks = 256;

  /** `pidPeriod` is in seconds. */
  explicit StreamIntervals(int pidPeriod);
  StreamIntervals(const StreamIntervals&) = delete;  // the times refer to it
  StreamIntervals& operator=(const StreamIntervals&) = delete;

  /** The next packet of the stream. */
  void push(const TsPacket& packet) { times_.push(packet); }
  /** A PAT, PMT or SDT section ends in the packet pushed last, on its PID. */
  void noteTable() { times_.markTable(); }
  /** From the packet pushed last on other PIDs have to come. */
  void refer(References references);
  /** The stream has ended; what had to come need not any more. */
  void finish();

  /** From the first to the last packet, in ticks; nothing without a clock. */
  [[nodiscard]] std::optional<int64_t> span() const { return span_; }
  /** Null for a PID of which nothing had to come, and without a clock. */
  [[nodiscard]] const PidIntervals* of(int pid) const {
    return pids_[static_cast<size_t>(pid)].get();
  }
  /** What an output with the PCRs of this PID repeats; null where two have not told a rate. */
  [[nodiscard]] const RepeatedTables* repeated(int pcrPid) const;

 private:
  void take(const PacketMark& mark, uint64_t number, int64_t time);
  void repeatTables(const PacketMark& mark, int64_t time);
  void expect(const References& references, int64_t time);
  [[nodiscard]] PidIntervals& at(int pid);

  int64_t pidPeriod_;
  std::vector<std::unique_ptr<PidIntervals>> pids_;
  std::deque<std::pair<uint64_t, References>> coming_;  // with the number of their packet
  References current_;
  std::map<int, RepeatedTables> repeated_;  // by PCR PID
  std::optional<int64_t> span_;
  PacketTimes times_;
};

}  // namespace tevra::tools::report
