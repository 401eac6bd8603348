#include "tools/extract/table_wait.h"

namespace tevra::tools {
namespace {

constexpr int64_t kTicks = 2 * kSystemClock;
constexpr uint64_t kPackets = 50'000;

}  // namespace

bool TableWait::isOverBefore(const TsPacket& packet) {
  const int64_t time = clock_.at(packet).time;
  ticks_ += clock_.isMeasured() ? time - last_ : 0;
  last_ = time;
  ++packets_;
  return ticks_ >= kTicks || (!clock_.isMeasured() && packets_ > kPackets);
}

}  // namespace tevra::tools
