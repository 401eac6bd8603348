#include "tools/extract/continuity_counters.h"

namespace tevra::tools {
namespace {

constexpr int kMask = 0x0F;

}  // namespace

void ContinuityCounters::number(TsPacket& packet) {
  Counter& counter = of(packet);
  // A packet without payload repeats the counter of the one before.
  packet.setContinuityCounter(counter.next - (packet.hasPayload() ? 0 : 1));
  counter.next = static_cast<uint8_t>((packet.continuityCounter() + 1) & kMask);
  counter.isUsed = true;
  counter.isAligned = false;
}

void ContinuityCounters::carry(TsPacket& packet) {
  Counter& counter = of(packet);
  const int own = packet.continuityCounter();
  if (!counter.isAligned && counter.isUsed) {
    number(packet);
    counter.offset = static_cast<uint8_t>((packet.continuityCounter() - own) & kMask);
  }
  packet.setContinuityCounter(own + counter.offset);
  counter.next = static_cast<uint8_t>((packet.continuityCounter() + 1) & kMask);
  counter.isUsed = true;
  counter.isAligned = true;
}

void ContinuityCounters::change(int pid) {
  pids_[static_cast<size_t>(pid)].isAligned = false;
}

void ContinuityCounters::changeAll() {
  for (Counter& counter : pids_) {
    counter.isAligned = false;
  }
}

}  // namespace tevra::tools
