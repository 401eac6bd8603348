#include "tests/tools/support/continuity_check.h"

#include <string>

#include <gmock/gmock.h>

namespace tevra::tools::test {

void ContinuityCheck::take(const TsPacket& packet) {
  const int counter = packet.continuityCounter();
  const auto last = last_.find(packet.pid());
  if (last != last_.end()) {
    const int expected = (last->second + (packet.hasPayload() ? 1 : 0)) & 0x0F;
    if (counter != expected) {
      faults_.add("PID " + std::to_string(packet.pid()) + ": continuity counter " +
                  std::to_string(counter) + " instead of " + std::to_string(expected));
    }
  }
  last_[packet.pid()] = counter;
}

void expectCountersRunOn(const std::vector<TsPacket>& packets) {
  Faults faults;
  ContinuityCheck check(faults);
  for (const TsPacket& packet : packets) {
    check.take(packet);
  }
  EXPECT_THAT(faults.lines(), testing::IsEmpty());
}

}  // namespace tevra::tools::test
