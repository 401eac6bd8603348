#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "tests/live/live_multiplex.h"
#include "tools/stream/udp_sink.h"

namespace tevra::test {

/** The time that stamps have: nanoseconds of the steady clock. */
[[nodiscard]] int64_t stampTime();

/** Sends a multiplex by the clock of the machine. */
class MultiplexPlayer {
 public:
  /** To what `name` says, as for an output; `multiplex` must outlive it. */
  MultiplexPlayer(LiveMultiplex& multiplex, const std::string& name)
      : multiplex_(multiplex), sink_(name) {}

  /** Sends until so many seconds of the multiplex have been sent in all, the first time from now.
   */
  void playUntil(double seconds);
  /** Sends nothing for a while, and then goes on where it was. */
  void pause(std::chrono::milliseconds time);

  /** What the machine did not take. */
  [[nodiscard]] std::vector<std::string> faults() const { return sink_.faults(); }
  /** How often the machine gave this process no time to send, so that the stream came late. */
  [[nodiscard]] int delays() const { return delays_; }

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] uint64_t duePackets(double seconds) const;
  void sendUntil(uint64_t packets);

  LiveMultiplex& multiplex_;
  tools::UdpSink sink_;
  Clock::time_point begin_;  // when the multiplex would have begun without delays
  int delays_ = 0;
};

}  // namespace tevra::test
