#include "tests/live/continuity_check.h"

#include <string>

namespace tevra::test {

void ContinuityCheck::take(const tools::TsPacket& packet, const StreamId& stream) {
  const int counter = packet.continuityCounter();
  const auto [entry, isNew] = last_.try_emplace(packet.pid(), Last{stream, counter});
  Last& last = entry->second;
  const int expected = (last.counter + (packet.hasPayload() ? 1 : 0)) & 0x0F;
  if (!isNew && last.stream == stream && counter != expected) {
    faults_.add("PID " + std::to_string(packet.pid()) + ": continuity counter " +
                std::to_string(counter) + " instead of " + std::to_string(expected));
  }
  last = {stream, counter};
}

}  // namespace tevra::test
