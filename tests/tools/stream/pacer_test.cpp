#include "tools/stream/pacer.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;
using std::chrono::nanoseconds;

constexpr int64_t kMillisecond = kSystemClock / 1000;

class PacerTest : public testing::Test {
 protected:
  void pace(int pid, int64_t pcr) { pacer_.pace(writer_.stream(pid, 0, pcr)); }

  test::PacketWriter writer_;
  std::vector<nanoseconds> waits_;
  Pacer pacer_{[this](nanoseconds sinceStart) { waits_.push_back(sinceStart); }};
};

TEST_F(PacerTest, WaitsForTheTimeOfEveryPcr) {
  pace(0x100, 500 * kMillisecond);
  pace(0x100, 540 * kMillisecond);
  pace(0x100, 550 * kMillisecond);
  EXPECT_EQ((std::vector<nanoseconds>{milliseconds(0), milliseconds(40), milliseconds(50)}),
            waits_);
}

TEST_F(PacerTest, FollowsTheFirstPidWithPcrsAlone) {
  pacer_.pace(writer_.stream(0x90, 0));
  pacer_.pace(writer_.stream(0x90, 0));
  pace(0x100, 0);
  pace(0x200, 3000 * kMillisecond);
  pace(0x100, 40 * kMillisecond);
  EXPECT_EQ((std::vector<nanoseconds>{milliseconds(0), milliseconds(40)}), waits_);
}

TEST_F(PacerTest, CountsOnOverTheEndOfTheClock) {
  pace(0x100, kPcrModulus - 20 * kMillisecond);
  pace(0x100, 20 * kMillisecond);
  EXPECT_EQ(milliseconds(40), waits_.back());
}

TEST_F(PacerTest, DoesNotWaitWhereTheClockJumps) {
  pace(0x100, 0);
  pace(0x100, 6000 * kMillisecond);
  pace(0x100, 5990 * kMillisecond);
  pace(0x100, 6000 * kMillisecond);
  EXPECT_EQ((std::vector<nanoseconds>{milliseconds(0), milliseconds(0), milliseconds(0),
                                      milliseconds(10)}),
            waits_);
}

TEST_F(PacerTest, DoesNotWaitForATimeThatAPacketAnnouncesAsAnotherClocks) {
  pace(0x100, 0);
  TsPacket packet = writer_.stream(0x100, 0, 40 * kMillisecond);
  packet.data()[5] |= 0x80;  // discontinuity_indicator
  pacer_.pace(packet);
  pace(0x100, 50 * kMillisecond);
  EXPECT_EQ((std::vector<nanoseconds>{milliseconds(0), milliseconds(0), milliseconds(10)}), waits_);
}

}  // namespace
}  // namespace tevra::tools
