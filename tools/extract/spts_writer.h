#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "records/records.h"
#include "tools/extract/continuity_counters.h"
#include "tools/outputs/spts_routes.h"
#include "tools/outputs/table_repetition.h"
#include "tools/stream/continuity.h"
#include "tools/stream/running_clock.h"
#include "tools/stream/stream_clock.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Makes the single-programme transport stream of one answer out of the packets of the input
 * multiplex.
 *
 * Packets of the listed PIDs go on under their output PIDs, everything else stays behind, the
 * input's PAT, SDT and PMT included. The answer's own come first of all, and again as a
 * TableRepetition says by the stream's own time. Continuity counters of the tables run on; those of
 * the streams stay as they are, unless several input PIDs share an output PID, or another stream
 * comes to a PID.
 */
class SptsWriter {
 public:
  /** May throw; what calls it passes the exception on. */
  using Sink = std::function<void(const TsPacket& packet)>;

  /** How stream time is told. */
  enum class Timing {
    kExact,  ///< by the PCRs on both sides, for which packets wait
    kAtOnce  ///< by those that have come: every packet goes on when it is pushed
  };

  /**
   * Raises ToolError when the answer holds no PAT, SDT or PMT packets, or some that are no packets.
   */
  SptsWriter(const SPTSConfiguration& configuration, Sink sink, Timing timing = Timing::kExact);
  SptsWriter(const SptsWriter&) = delete;  // the clock refers to it
  SptsWriter& operator=(const SptsWriter&) = delete;

  /** The next packet of the input multiplex. */
  void push(const TsPacket& packet);
  /** Writes what is held back. */
  void finish() { exact_.finish(); }
  /**
   * From the next packet on the output is as this answer says, and its tables come before that.
   * Raises ToolError as the constructor does, and then changes nothing.
   */
  void configure(const SPTSConfiguration& configuration);
  /** Packets of the input are left out here: counters run on over that, and it is no gap. */
  void skip() {
    counters_.changeAll();
    continuity_.clear();
  }

  /** Packets written that came from the input. */
  [[nodiscard]] uint64_t streamPackets() const { return streamPackets_; }
  /** Packets written of PAT, SDT and PMT. */
  [[nodiscard]] uint64_t tablePackets() const { return tablePackets_; }
  /**
   * By output PID, how often packets of the input's stream did not follow each other, as Continuity
   * has it; 1 and more.
   */
  [[nodiscard]] const std::map<int, uint64_t>& gaps() const { return gaps_; }
  /** Stream time from the first to the last input packet in 27 MHz ticks; nothing without PCRs. */
  [[nodiscard]] std::optional<int64_t> duration() const {
    const bool isMeasured = exact_.isMeasured() || running_.isMeasured();
    return isMeasured ? std::optional<int64_t>(duration_) : std::nullopt;
  }
  /** One line for every item of the answer that cannot be carried. */
  [[nodiscard]] const std::vector<std::string>& warnings() const { return plan_.routes.warnings(); }

 private:
  using Packets = std::vector<TsPacket>;

  /** What an answer says. */
  struct Plan {
    explicit Plan(const SPTSConfiguration& configuration);

    Packets pat;
    Packets sdt;
    Packets pmt;
    SptsRoutes routes;
  };

  void take(const TsPacket& packet, const RunningClock::Moment& moment);
  void insert(const Packets& table);
  void carry(const TsPacket& packet, const PidRoute& route);
  /** Notes which PIDs get another stream, or begin anew, with these routes. */
  void noteChanges(const SptsRoutes& next);

  Plan plan_;
  Sink sink_;
  Timing timing_;
  StreamClock exact_;  // one of the two is used
  RunningClock running_;

  TableRepetition repetition_;
  ContinuityCounters counters_;
  std::map<int, Continuity> continuity_;  // by input PID
  std::map<int, uint64_t> gaps_;
  uint64_t streamPackets_ = 0;
  uint64_t tablePackets_ = 0;
  int64_t duration_ = 0;
};

}  // namespace tevra::tools
