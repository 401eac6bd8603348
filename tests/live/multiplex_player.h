#pragma once

#include <chrono>

#include "tests/live/datagrams.h"
#include "tests/live/live_multiplex.h"

namespace tevra::test {

/** The time that stamps have: nanoseconds of the steady clock. */
[[nodiscard]] int64_t stampTime();

/** Sends a multiplex to a port of 127.0.0.1 by the clock of the machine. */
class MultiplexPlayer {
 public:
  /** `multiplex` must outlive it. */
  MultiplexPlayer(LiveMultiplex& multiplex, int port) : multiplex_(multiplex), sender_(port) {}

  /** Sends until so many seconds of the multiplex have been sent in all, the first time from now.
   */
  void playUntil(double seconds);
  /** Sends nothing for a while, and then goes on where it was. */
  void pause(std::chrono::milliseconds time);

  /** Datagrams that the machine did not take. */
  [[nodiscard]] uint64_t refused() const { return sender_.refused(); }
  /** How often the machine gave this process no time to send, so that the stream came late. */
  [[nodiscard]] int delays() const { return delays_; }

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] uint64_t duePackets(double seconds) const;
  void sendUntil(uint64_t packets);

  LiveMultiplex& multiplex_;
  DatagramSender sender_;
  Clock::time_point begin_;  // when the multiplex would have begun without delays
  int delays_ = 0;
};

}  // namespace tevra::test
