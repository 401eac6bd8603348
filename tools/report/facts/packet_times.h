#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <vector>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {

/** What has to be known of a packet when its time is. */
struct PacketMark {
  uint16_t pid = 0;            ///< 0 to 8191; of a packet flagged as damaged kNullPid
  bool hasTable = false;       ///< a section ends in it that somebody waits for
  bool hasPts = false;         ///< a PES packet with a PTS begins in it, as far as can be read
  bool discontinuity = false;  ///< the clock may jump at its PCR
  std::optional<int64_t> pcr;  ///< one that can be believed
};

/**
 * Tells the times of packets while the stream is read once. The clock is the first PID with two
 * PCRs that tell a rate; packets between two of its PCRs are spread evenly, like those of a
 * StreamClock, and the rate of the nearest interval goes on where the clock jumps, ends or has not
 * begun. An interval of more than 0.1 s, and of more than twice the time that its packets took
 * before, is a jump or a gap in the recording; if the next one is as well, the rate has changed. At
 * most kMaxPending marks are held back; without a clock by then, those packets have no time and are
 * left out.
 */
class PacketTimes {
 public:
  /**
   * `number` counts packets from 0. `time` is in 27 MHz ticks since the first packet that has one
   * and never falls.
   */
  using Consumer = std::function<void(const PacketMark& mark, uint64_t number, int64_t time)>;

  /** Marks held back at most. */
  static constexpr size_t kMaxPending = size_t{1} << 20;

  /** `consumer` is given every packet that has a time. */
  explicit PacketTimes(Consumer consumer) : consumer_(std::move(consumer)) {}

  /** The next packet of the stream. */
  void push(const TsPacket& packet);
  /** A section that somebody waits for ends in the packet pushed last. */
  void markTable() { pending_.back().hasTable = true; }
  /** Hands on what is left. */
  void finish() { release(pending_.size()); }

  /** The number of the packet pushed last. */
  [[nodiscard]] uint64_t last() const { return firstPending_ + pending_.size() - 1; }

 private:
  struct Anchor {
    size_t index;  // of the packet with the PCR, in pending_
    int64_t pcr;
  };

  void takePcr(int pid, int64_t pcr, bool discontinuity);
  /** Whether a rate is known from this PCR on, and with it the clock. */
  [[nodiscard]] bool findClock(int pid, const Anchor& here, bool discontinuity);
  void makeRoom();
  /** Hands on the first `count` marks at the current rate; without one they are forgotten. */
  void release(size_t count);

  Consumer consumer_;
  std::vector<PacketMark> pending_;
  uint64_t firstPending_ = 0;       // its number
  int64_t pendingTime_ = 0;         // its time
  double ticksPerPacket_ = 0;       // no rate yet
  std::map<int, Anchor> lastPcrs_;  // by PID, while there is no clock
  int clockPid_ = kNullPid;
  std::optional<Anchor> anchor_;
  bool jumped_ = false;  // at anchor_, ahead
};

}  // namespace tevra::tools::report
