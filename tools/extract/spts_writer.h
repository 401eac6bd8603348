#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "records/records.h"
#include "tools/outputs/spts_routes.h"
#include "tools/stream/stream_clock.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Makes the single-programme transport stream of one answer out of the packets of the input
 * multiplex.
 *
 * Packets of the listed PIDs go on under their output PIDs, everything else stays behind, the
 * input's PAT, SDT and PMT included. The answer's own come first of all, then PAT and PMT at least
 * every 100 ms of stream time and the SDT every second; they stand before a packet with a PCR
 * where those are close enough, so that a meter that knows the PCRs alone finds the same.
 * Continuity counters of the tables run on; those of the streams stay as they are, unless several
 * input PIDs share an output PID.
 */
class SptsWriter {
 public:
  /** May throw; push and finish pass the exception on. */
  using Sink = std::function<void(const TsPacket& packet)>;

  /**
   * Raises ToolError when the answer holds no PAT, SDT or PMT packets, or some that are no packets.
   */
  SptsWriter(const SPTSConfiguration& configuration, Sink sink);
  SptsWriter(const SptsWriter&) = delete;  // the clock refers to it
  SptsWriter& operator=(const SptsWriter&) = delete;

  /** The next packet of the input multiplex. What comes of it may wait for a later one. */
  void push(const TsPacket& packet) { clock_.push(packet); }
  /** Writes what is held back. */
  void finish() { clock_.finish(); }

  /** Packets written that came from the input. */
  [[nodiscard]] uint64_t streamPackets() const { return streamPackets_; }
  /** Packets written of PAT, SDT and PMT. */
  [[nodiscard]] uint64_t tablePackets() const { return tablePackets_; }
  /** Stream time from the first to the last input packet in 27 MHz ticks; nothing without PCRs. */
  [[nodiscard]] std::optional<int64_t> duration() const {
    return clock_.isMeasured() ? std::optional<int64_t>(duration_) : std::nullopt;
  }
  /** One line for every item of the answer that cannot be carried. */
  [[nodiscard]] const std::vector<std::string>& warnings() const { return routes_.warnings(); }

 private:
  using Packets = std::vector<TsPacket>;

  void take(const TsPacket& packet, int64_t time, int64_t horizon);
  void insertTables(int64_t time, int64_t horizon);
  void insert(const Packets& table);
  void carry(const TsPacket& packet, const PidRoute& route);
  /** The continuity counter that the next packet with a payload on the PID gets. */
  [[nodiscard]] int nextCounter(int pid);

  Packets pat_;
  Packets sdt_;
  Packets pmt_;
  SptsRoutes routes_;
  Sink sink_;
  StreamClock clock_;

  std::vector<uint8_t> counters_;  // by output PID
  std::optional<int64_t> patAndPmtTime_;
  std::optional<int64_t> sdtTime_;
  uint64_t streamPackets_ = 0;
  uint64_t tablePackets_ = 0;
  int64_t duration_ = 0;
};

}  // namespace tevra::tools
