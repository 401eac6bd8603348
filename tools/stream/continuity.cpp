#include "tools/stream/continuity.h"

#include <algorithm>
#include <utility>

namespace tevra::tools {
namespace {

constexpr size_t kPcrBegin = 6;  // in a packet that has one
constexpr size_t kPcrEnd = 12;

/** Byte for byte the same, but for the PCR. */
bool isCopy(const TsPacket& packet, const TsPacket& last) {
  const size_t rest = packet.pcr() && last.pcr() ? kPcrEnd : kPcrBegin;
  return std::equal(packet.data(), packet.data() + kPcrBegin, last.data()) &&
         std::equal(packet.data() + rest, packet.data() + kTsPacketSize, last.data() + rest);
}

}  // namespace

bool Continuity::breaksAt(const TsPacket& packet) {
  if (packet.transportError()) {
    lastCounter_ = -1;  // nothing else in it can be believed, nor whether it is of this PID
    return false;
  }
  const int counter = packet.continuityCounter();
  const int last = std::exchange(lastCounter_, counter);
  const bool repeatable = std::exchange(repeatable_, packet.hasPayload());
  const bool mayBeAny = last < 0 || packet.discontinuity();
  if (!packet.hasPayload()) {
    return !mayBeAny && counter != last;
  }
  bool breaks = false;
  if (!mayBeAny && counter != ((last + 1) & 0x0F)) {
    const bool copies = counter == last && isCopy(packet, last_);
    breaks = !copies || !repeatable;
    repeatable_ = !copies;
  }
  last_ = packet;
  return breaks;
}

}  // namespace tevra::tools
