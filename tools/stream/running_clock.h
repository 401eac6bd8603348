#pragma once

#include <cstdint>
#include <optional>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Tells at once, without looking ahead, at which stream time a packet of a multiplex lies, by the
 * PCRs of one PID.
 *
 * From a PCR on time goes by packets at the rate of the last interval, but stands still where the
 * next PCR is late, until 4096 packets have come; when it comes, the time is right again, as far as
 * it need not fall for that. Where the clock jumps, as pcrInterval has it or announced by a
 * discontinuity_indicator, time goes on from the packet before. Until two PCRs have told a rate
 * 1 Mbit/s is assumed, and so it is of a stream without any.
 */
class RunningClock {
 public:
  /** When a packet comes: 27 MHz ticks since the first one. */
  struct Moment {
    int64_t time;     ///< never falls
    int64_t horizon;  ///< for a packet with a PCR: by when the next is expected; else `time`
  };

  /** By the PCRs of `pcrPid`, or else of the first PID that has any. */
  explicit RunningClock(std::optional<int> pcrPid = std::nullopt) : pcrPid_(pcrPid) {}

  /** Of the next packet of the multiplex. */
  [[nodiscard]] Moment at(const TsPacket& packet) {
    return at(packet.pid(), packet.pcr(), packet.discontinuity());
  }
  /** The same where no more of it is known; without a PCR `discontinuity` says nothing. */
  [[nodiscard]] Moment at(int pid, std::optional<int64_t> pcr, bool discontinuity);
  /** From now on by the PCRs of this PID; time goes on. */
  void follow(int pcrPid);

  /** Whose PCRs it goes by; nothing before the first, unless it was told. */
  [[nodiscard]] std::optional<int> pcrPid() const { return pcrPid_; }
  /** Whether the times are by PCRs: two have told how fast packets come. */
  [[nodiscard]] bool isMeasured() const { return ticksPerPacket_.has_value(); }

 private:
  void takePcr(int64_t pcr, bool discontinuity);
  void learn(int64_t interval);
  [[nodiscard]] int64_t sinceAnchor() const;

  std::optional<int> pcrPid_;
  std::optional<int64_t> pcr_;  // the last one
  int64_t anchor_ = 0;          // its time, or when the wait for the first one began
  int64_t packets_ = 0;         // from then on
  int64_t time_ = 0;            // of the last packet
  std::optional<double> ticksPerPacket_;
  bool wasGap_ = false;  // the last interval
  int64_t longest_ = 0;  // interval of late
};

}  // namespace tevra::tools
