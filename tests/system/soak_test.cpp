#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <random>
#include <string>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/environment.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/process_figures.h"
#include "tests/system/soak_run.h"

namespace tevra::test {
namespace {

constexpr int64_t kDefaultCalls = kSlowed ? 1000 : 4000;

/** Below, chance may leave something out. */
constexpr int64_t kVariedRun = 4000;

/** From here on a run is meant to judge memory, and tells how far it is. */
constexpr int64_t kLongRun = 100000;

int64_t callsToMake() {
  return fromEnvironment("TORNEL_SOAK_CALLS", kDefaultCalls);
}

uint32_t seed() {
  static const auto kSeed =
      static_cast<uint32_t>(fromEnvironment("TORNEL_SOAK_SEED", std::random_device()()));
  return kSeed;
}

class Soak : public testing::Test {
 protected:
  Soak() { std::cout << "TORNEL_SOAK_SEED=" << seed() << std::endl; }

  void printCounts() const {
    const SoakRun::Counts& counts = run_.counts();
    const SoakTally& tally = run_.tally();
    const std::chrono::duration<double> time = std::chrono::steady_clock::now() - start_;
    std::cout << counts.calls << " calls on " << counts.connections << " connections in "
              << time.count() << " s, " << static_cast<double>(counts.calls) / time.count()
              << " calls/s\n"
              << "compared: " << counts.outputs << " outputs, " << 3 * counts.outputs
              << " table versions, " << counts.notifications << " notifications, " << counts.eits
              << " of them EITs\n"
              << "outputs were made " << tally.direct << " times directly, " << tally.listed
              << " times for others, " << tally.fallback << " times by fallback, " << tally.withEmm
              << " times with EMM PIDs, " << tally.filtered << " times with less audio; versions "
              << "moved " << tally.moved << " times (" << tally.wrapped
              << " times to 0) and stayed " << tally.kept << " times\n"
              << "besides: " << run_.pidResets() << " new PID maps, " << run_.offsetChanges()
              << " new time offsets, " << tally.unmapped << " PIDs of an older map, "
              << tally.forgotten << " services aged out" << std::endl;
  }

  /** A run that never came to these has shown little. */
  void expectVariety() const {
    const SoakTally& tally = run_.tally();
    for (const int64_t times :
         {tally.empty, tally.direct, tally.listed, tally.fallback, tally.withEmm, tally.filtered,
          tally.unmapped, tally.moved, tally.kept, tally.wrapped, run_.pidResets(),
          run_.offsetChanges(), run_.counts().eits, run_.counts().connections - 1}) {
      EXPECT_GT(times, 0);
    }
  }

  const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
  fake::FakeMainTask mainTask_;
  TemporaryDirectory root_;
  DaemonSetup quiet_ = [] {
    DaemonSetup setup;
    setup.level = 4;
    return setup;
  }();
  Daemon daemon_{root_.path(), quiet_};
  SoakRun run_{seed(), mainTask_};
};

/** The daemon's resources over a run: its memory may grow in the first tenth only. */
class Watch {
 public:
  Watch(pid_t daemon, int64_t calls) : figures_(daemon), calls_(calls) {}

  /** To be told of every call. */
  void afterCall(int64_t call) {
    if (call % std::max<int64_t>(calls_ / 100, 1) != 0) {
      return;
    }
    const int64_t size = figures_.residentSize();
    const int64_t percent = call * 100 / calls_;
    if (percent <= 10) {
      level_ = size;
      descriptors_ = figures_.descriptors();
    }
    highest_ = std::max(highest_, size);
    if (calls_ >= kLongRun) {
      std::cout << percent << " %: " << call << " calls, " << size << " kB" << std::endl;
    }
    expectMemoryBelow(level_ + allowedGrowth() + 1, size,
                      "from " + std::to_string(level_) + " kB at 10 % to " + std::to_string(size) +
                          " kB at " + std::to_string(percent) + " %");
  }

  void afterAll() const {
    std::cout << "memory: " << level_ << " kB at 10 %, " << figures_.residentSize()
              << " kB at the end, " << highest_ << " kB at most; descriptors: " << descriptors_
              << " at 10 %, " << figures_.descriptors() << " at the end" << std::endl;
    EXPECT_GT(level_, 0);
    EXPECT_EQ(figures_.descriptors(), descriptors_);
  }

 private:
  [[nodiscard]] int64_t allowedGrowth() const {
    // The first tenth of a short run has not yet met every table at its largest.
    constexpr int64_t kShortRunSlack = 300;
    const int64_t onePercent = level_ / 100;
    return calls_ < kLongRun ? std::max(onePercent, kShortRunSlack) : onePercent;
  }

  const ProcessFigures figures_;
  const int64_t calls_;
  int64_t level_ = 0;
  int64_t highest_ = 0;
  int64_t descriptors_ = 0;
};

TEST_F(Soak, AnswersAreTheModelsAndNothingGrows) {
  const int64_t calls = callsToMake();
  Watch watch(daemon_.pid(), calls);
  for (int64_t call = 1; call <= calls; ++call) {
    ASSERT_NO_FATAL_FAILURE(run_.call());
    ASSERT_NO_FATAL_FAILURE(watch.afterCall(call));
  }
  printCounts();
  watch.afterAll();
  if (calls >= kVariedRun) {
    expectVariety();
  }
}

TEST_F(Soak, AnswersAreTheModelsOverRestarts) {
  const int64_t restarts = std::max<int64_t>(callsToMake() / 2000, 20);
  Dice dice(seed() + 1);
  for (int64_t restart = 0; restart < restarts; ++restart) {
    for (int32_t calls = dice.between(1, 80); calls > 0; --calls) {
      ASSERT_NO_FATAL_FAILURE(run_.call());
    }
    daemon_.restart();
    ASSERT_NO_FATAL_FAILURE(run_.daemonRestarted());
  }
  std::cout << restarts << " restarts" << std::endl;
  printCounts();
  EXPECT_GT(run_.tally().kept, 0);
  EXPECT_GT(run_.tally().moved, 0);
  EXPECT_GT(run_.tally().forgotten, 0);
}

}  // namespace
}  // namespace tevra::test
