#include "tools/stream/stream_clock.h"

#include <cmath>
#include <utility>

namespace tevra::tools {
namespace {

constexpr double kAssumedBitRate = 1e6;

}  // namespace

StreamClock::StreamClock(int pcrPid, Consumer consumer)
    : pcrPid_(pcrPid),
      consumer_(std::move(consumer)),
      ticksPerPacket_(kTsPacketSize * 8 / kAssumedBitRate * static_cast<double>(kSystemClock)) {}

void StreamClock::push(const TsPacket& packet) {
  const size_t index = pending_.size();
  pending_.push_back(packet);
  if (packet.pid() == pcrPid_) {
    if (const std::optional<int64_t> pcr = packet.pcr()) {
      takePcr(index, *pcr, packet.discontinuity());
    }
  }
  if (pending_.size() >= kMaxPending) {
    finish();
  }
}

void StreamClock::takePcr(size_t index, int64_t pcr, bool discontinuity) {
  if (!anchor_) {
    anchor_ = Anchor{index, pcr};
    return;
  }
  const int64_t interval = pcrInterval(anchor_->pcr, pcr);
  if (!discontinuity && interval > 0) {
    ticksPerPacket_ = static_cast<double>(interval) / static_cast<double>(index - anchor_->index);
    isMeasured_ = true;
  }
  release(index);
  anchor_ = Anchor{0, pcr};
}

void StreamClock::finish() {
  release(pending_.size());
  anchor_.reset();
}

void StreamClock::follow(int pcrPid) {
  finish();
  pcrPid_ = pcrPid;
}

void StreamClock::release(size_t count) {
  const auto timeAt = [this](size_t index) {
    return pendingTime_ + std::llround(static_cast<double>(index) * ticksPerPacket_);
  };
  const int64_t end = timeAt(count);
  for (size_t i = 0; i < count; ++i) {
    const int64_t time = timeAt(i);
    consumer_(pending_[i], time, anchor_ && anchor_->index == i ? end : time);
  }
  pendingTime_ = end;
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace tevra::tools
