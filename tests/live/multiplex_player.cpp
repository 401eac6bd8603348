#include "tests/live/multiplex_player.h"

#include <algorithm>
#include <thread>

namespace tevra::test {
namespace {

using Seconds = std::chrono::duration<double>;

constexpr int kPacketsOfDatagram = 7;
constexpr std::chrono::milliseconds kTick(1);
constexpr std::chrono::milliseconds kDelay(100);

}  // namespace

int64_t stampTime() {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

void MultiplexPlayer::playUntil(double seconds) {
  const uint64_t last = duePackets(seconds);
  begin_ = multiplex_.packets() == 0 ? Clock::now() : begin_;
  while (multiplex_.packets() < last) {
    const uint64_t due = duePackets(Seconds(Clock::now() - begin_).count());
    const uint64_t late = due - std::min(due, multiplex_.packets());
    if (late > duePackets(Seconds(kDelay).count())) {
      ++delays_;  // what comes too late must not come all at once
      begin_ += std::chrono::duration_cast<Clock::duration>(
          Seconds(static_cast<double>(late) / multiplex_.packetsPerSecond()));
      continue;
    }
    sendUntil(std::min(due, last));
    std::this_thread::sleep_for(kTick);
  }
}

void MultiplexPlayer::pause(std::chrono::milliseconds time) {
  std::this_thread::sleep_for(time);
  begin_ += time;
}

uint64_t MultiplexPlayer::duePackets(double seconds) const {
  return static_cast<uint64_t>(std::max(seconds, 0.0) * multiplex_.packetsPerSecond());
}

/** Whole datagrams, the last of which may go beyond it. */
void MultiplexPlayer::sendUntil(uint64_t packets) {
  while (multiplex_.packets() < packets) {
    const int64_t now = stampTime();
    for (int i = 0; i < kPacketsOfDatagram; ++i) {
      sink_.write(multiplex_.next(now));
    }
  }
}

}  // namespace tevra::test
