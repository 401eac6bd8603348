#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Tells at which stream time every packet of a multiplex lies, by the PCRs of one PID.
 *
 * Packets between two PCRs are spread evenly, so a packet is handed on when the next PCR has come.
 * Before the first and behind the last PCR, and where the clock jumps, the rate of the nearest
 * interval goes on; without any PCR 1 Mbit/s is assumed, little for a multiplex. At most
 * kMaxPending packets are held back.
 */
class StreamClock {
 public:
  /**
   * `time` is in 27 MHz ticks since the first packet and never falls. `horizon` is the time of the
   * next PCR for a packet with one, `time` for any other. May throw.
   */
  using Consumer = std::function<void(const TsPacket& packet, int64_t time, int64_t horizon)>;

  /** Packets held back at most. */
  static constexpr size_t kMaxPending = 65536;

  /** A `pcrPid` that no packet has is a stream without PCRs. */
  StreamClock(int pcrPid, Consumer consumer);

  /** The next packet of the multiplex. Passes on what the consumer raises. */
  void push(const TsPacket& packet);
  /** Hands on what is left. */
  void finish();
  /** The same, and goes on by the PCRs of another PID; so does time. */
  void follow(int pcrPid);
  /** Whether the times are by PCRs: two have told how fast packets come. */
  [[nodiscard]] bool isMeasured() const { return isMeasured_; }

 private:
  struct Anchor {
    size_t index;  // of the packet with the last PCR, in pending_
    int64_t pcr;
  };

  void takePcr(size_t index, int64_t pcr, bool discontinuity);
  /** Hands on the first `count` packets at the current rate. */
  void release(size_t count);

  int pcrPid_;
  Consumer consumer_;
  std::vector<TsPacket> pending_;
  int64_t pendingTime_ = 0;  // of the first of them
  double ticksPerPacket_;
  bool isMeasured_ = false;
  std::optional<Anchor> anchor_;
};

}  // namespace tevra::tools
