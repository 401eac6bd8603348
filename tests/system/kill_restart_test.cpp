#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>
#include <thread>

#include "tests/support/environment.h"
#include "tests/system/kill_restart.h"

// kill -9 at any moment of a running load. The environment sets how often (TORNEL_KILLS) and where
// to begin (TORNEL_SEED).

namespace tevra::test {
namespace {

using std::chrono::microseconds;

constexpr microseconds kLongestLoad{150'000};

class KillAndRestart : public testing::Test {
 protected:
  void killDuringLoad();
  void report() const;

  const uint32_t seed_ =
      static_cast<uint32_t>(fromEnvironment("TORNEL_SEED", std::random_device()()));
  const int kills_ = static_cast<int>(fromEnvironment("TORNEL_KILLS", 25));
  std::mt19937 random_{seed_};
  KilledDaemon killed_{seed_ + 1};
};

void KillAndRestart::killDuringLoad() {
  const microseconds delay(
      std::uniform_int_distribution<int64_t>(0, kLongestLoad.count())(random_));
  std::thread caller([this] { killed_.load().run(); });
  std::this_thread::sleep_for(delay);
  killed_.daemon().kill();
  caller.join();
}

void KillAndRestart::report() const {
  std::cout << "seed " << seed_ << ": " << kills_ << " kills, slowest answer after a restart "
            << killed_.slowestAnswer().count()
            << " ms, calls whose EIT versions were handed out but not saved "
            << killed_.versionsNotSaved() << '\n';
  for (const Tally& tally : killed_.tallies()) {
    std::cout << tally.file << ": half-written " << tally.of(Found::kHalfWritten)
              << ", of these empty " << tally.empty << "; whole without the last call "
              << tally.of(Found::kWholeAsBefore) << ", whole with it "
              << tally.of(Found::kWholeWithLastCall) << "; not saved since the start "
              << tally.of(Found::kUntouched) << '\n';
    EXPECT_EQ(tally.of(Found::kHalfWritten), 0) << tally.file;
  }
}

TEST_F(KillAndRestart, KeepsVersionsAndPids) {
  std::cout << "TORNEL_SEED=" << seed_ << '\n';
  for (int kill = 0; kill < kills_ && !HasFailure(); ++kill) {
    SCOPED_TRACE("kill " + std::to_string(kill) + ", seed " + std::to_string(seed_));
    killDuringLoad();
    killed_.comeBack();
  }
  EXPECT_GT(killed_.load().answered(), kills_);
  report();
}

}  // namespace
}  // namespace tevra::test
