#include "tools/stream/running_clock.h"

#include <algorithm>
#include <cmath>

namespace tevra::tools {
namespace {

constexpr double kAssumedTicksPerPacket =
    kTsPacketSize * 8 / 1e6 * static_cast<double>(kSystemClock);
/** What may be expected of any stream (ETSI TR 101 154). */
constexpr int64_t kUsualInterval = kSystemClock * 4 / 100;
/** Packets in which a late PCR is waited for: a tenth of a second of a full multiplex. */
constexpr int64_t kPatience = 4096;
/** The longest interval is forgotten by this part of the time that passes. */
constexpr int64_t kForgotten = 32;

}  // namespace

RunningClock::Moment RunningClock::at(int pid, std::optional<int64_t> pcr, bool discontinuity) {
  const bool isClock = pcr && pid == pcrPid_.value_or(pid);
  if (isClock) {
    pcrPid_ = pid;
    takePcr(*pcr, discontinuity);
  }
  time_ = std::max(time_, anchor_ + sinceAnchor());
  ++packets_;
  return {time_, isClock ? time_ + longest_ : time_};
}

void RunningClock::follow(int pcrPid) {
  if (pcrPid == pcrPid_) {
    return;
  }
  pcrPid_ = pcrPid;
  pcr_.reset();
  anchor_ = time_;
  packets_ = 0;
}

void RunningClock::takePcr(int64_t pcr, bool discontinuity) {
  if (pcr == pcr_ && !discontinuity) {
    return;  // one that stands still tells nothing
  }
  const int64_t interval = pcr_ && !discontinuity ? pcrInterval(*pcr_, pcr) : 0;
  if (interval > 0) {
    learn(interval);
    anchor_ += interval;
  } else {
    anchor_ = time_;
  }
  pcr_ = pcr;
  packets_ = 0;
}

void RunningClock::learn(int64_t interval) {
  const double ticksPerPacket = static_cast<double>(interval) / static_cast<double>(packets_);
  // Packets were lost, or the source stopped, unless the next interval is like that as well.
  wasGap_ = !wasGap_ && isMeasured() && interval > kPcrLimit &&
            ticksPerPacket > 2 * ticksPerPacket_.value();
  if (!wasGap_) {
    ticksPerPacket_ = ticksPerPacket;
    longest_ = std::max(interval, longest_ - interval / kForgotten);
  }
}

int64_t RunningClock::sinceAnchor() const {
  const auto ticks = [this](int64_t packets) {
    return static_cast<int64_t>(std::llround(static_cast<double>(packets) *
                                             ticksPerPacket_.value_or(kAssumedTicksPerPacket)));
  };
  const int64_t expected = std::min(ticks(packets_), std::max(longest_, kUsualInterval));
  return std::max(expected, ticks(packets_ - kPatience));
}

}  // namespace tevra::tools
