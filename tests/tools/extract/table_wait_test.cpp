#include "tools/extract/table_wait.h"

#include <gtest/gtest.h>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

constexpr int kClock = 0x101;
constexpr int kOther = 0x102;
constexpr int64_t kPcrInterval = kSystemClock / 25;

/** Packets until it is over, of a stream with so many from one PCR to the next; 0: without any. */
int packetsOf(TableWait wait, int packetsPerPcr) {
  test::PacketWriter writer;
  int64_t pcr = 0;
  for (int count = 0;; ++count) {
    const bool isClock = packetsPerPcr != 0 && count % packetsPerPcr == 0;
    const TsPacket packet =
        isClock ? writer.stream(kClock, 0, pcr += kPcrInterval) : writer.stream(kOther, 0);
    if (wait.isOverBefore(packet)) {
      return count;
    }
  }
}

TEST(TableWait, IsTwoSecondsOfTheStreamHoweverFastItIs) {
  EXPECT_NEAR(packetsOf(TableWait(), 1), 50, 2);
  EXPECT_NEAR(packetsOf(TableWait(), 1000), 50'000, 2000);
}

TEST(TableWait, EndsWithoutPcrsToo) {
  EXPECT_EQ(50'000, packetsOf(TableWait(), 0));
}

}  // namespace
}  // namespace tevra::tools
