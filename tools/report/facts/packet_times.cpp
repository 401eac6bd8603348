#include "tools/report/facts/packet_times.h"

#include <cmath>

namespace tevra::tools::report {
namespace {

/** Whether a PCR's interval is no time that its packets took, which is about `expected`. */
bool isJump(int64_t interval, double expected) {
  return expected > 0 && interval > kPcrLimit && static_cast<double>(interval) > 2 * expected;
}

/** Whether a PES packet with a PTS begins in it (ISO/IEC 13818-1, 2.4.3.6). */
bool hasPts(const TsPacket& packet) {
  constexpr size_t kPesFlags = 8;  // with the bytes before them
  const uint8_t* pes = packet.data() + packet.payloadOffset();
  return packet.unitStart() && packet.payloadOffset() + kPesFlags <= kTsPacketSize && pes[0] == 0 &&
         pes[1] == 0 && pes[2] == 1 && (pes[6] & 0xC0) == 0x80 && (pes[7] & 0x80) != 0;
}

}  // namespace

void PacketTimes::push(const TsPacket& packet) {
  if (pending_.size() >= kMaxPending) {
    makeRoom();
  }
  PacketMark& mark = pending_.emplace_back();
  mark.pid = static_cast<uint16_t>(packet.transportError() ? kNullPid : packet.pid());
  if (mark.pid == kNullPid) {
    return;
  }
  mark.pcr = packet.pcr();
  mark.hasPts = hasPts(packet);
  mark.discontinuity = packet.discontinuity();
  if (mark.pcr) {
    takePcr(mark.pid, *mark.pcr, mark.discontinuity);
  }
}

void PacketTimes::takePcr(int pid, int64_t pcr, bool discontinuity) {
  const Anchor here = {pending_.size() - 1, pcr};
  if (clockPid_ == kNullPid && !findClock(pid, here, discontinuity)) {
    return;
  }
  if (pid != clockPid_) {
    return;
  }
  const int64_t interval = anchor_ && !discontinuity ? pcrInterval(anchor_->pcr, pcr) : 0;
  const auto packets = static_cast<double>(anchor_ ? here.index - anchor_->index : 0);
  jumped_ = !jumped_ && isJump(interval, packets * ticksPerPacket_);  // twice is a rate
  if (interval > 0 && !jumped_) {
    ticksPerPacket_ = static_cast<double>(interval) / packets;
  }
  release(here.index);
  anchor_ = Anchor{0, pcr};
}

bool PacketTimes::findClock(int pid, const Anchor& here, bool discontinuity) {
  const auto [last, isFirst] = lastPcrs_.try_emplace(pid, here);
  if (isFirst || discontinuity || pcrInterval(last->second.pcr, here.pcr) <= 0) {
    last->second = here;
    return false;
  }
  clockPid_ = pid;
  anchor_ = last->second;
  lastPcrs_.clear();
  return true;
}

void PacketTimes::makeRoom() {
  release(pending_.size());
  anchor_.reset();
  lastPcrs_.clear();
}

void PacketTimes::release(size_t count) {
  const auto timeAt = [this](size_t index) {
    return pendingTime_ + std::llround(static_cast<double>(index) * ticksPerPacket_);
  };
  for (size_t index = 0; index < count && ticksPerPacket_ > 0; ++index) {
    consumer_(pending_[index], firstPending_ + index, timeAt(index));
  }
  pendingTime_ = timeAt(count);
  firstPending_ += count;
  pending_.erase(pending_.begin(), pending_.begin() + static_cast<std::ptrdiff_t>(count));
}

}  // namespace tevra::tools::report
