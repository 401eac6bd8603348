#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <iostream>
#include <string>
#include <vector>

#include "tests/live/live_multiplex.h"
#include "tests/live/multiplex_player.h"
#include "tests/live/spts_listener.h"
#include "tests/support/environment.h"
#include "tests/support/sanitizers.h"
#include "tests/system/process_figures.h"
#include "tests/system/tornelctl.h"
#include "tools/text/words.h"

namespace tevra::test {
namespace {

using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Lt;
using testing::SizeIs;

constexpr int kInputPort = 5000;
constexpr int kOutputPort = 6000;

/** A sanitizer lets a program do no more. */
constexpr int kMegabits = kSlowed ? 8 : 40;
constexpr std::chrono::seconds kPause(1);

// What goes wrong comes once a minute in a long run, and each in a short one. Parts of a cycle.
constexpr double kCycle = 60;
constexpr double kNewStream = 0.3;
constexpr double kPauses = 0.45;
constexpr double kNewTransportStream = 0.6;

/** Seconds until the last table has come that an output needs, the SDT, and not much more. */
constexpr double kTablesComplete = 0.6;

// Kilobytes. The buffers for what comes in and goes out fill in the first seconds.
constexpr int64_t kMemory = 64 * 1024;
constexpr int64_t kGrowth = 512;

double seconds() {
  return static_cast<double>(fromEnvironment("TORNEL_LIVE_SECONDS", 4));
}

std::string nameOf(int port) {
  return "udp://127.0.0.1:" + std::to_string(port);
}

/** The tool between a multiplex that comes by the clock and one who looks on. */
class LiveExtract : public testing::Test {
 protected:
  /** All that happens to the source. */
  void play() {
    const double length = seconds() / cycles_;
    for (int cycle = 0; cycle < cycles_; ++cycle) {
      const auto at = [&](double part) { return (cycle + part) * length; };
      player_.playUntil(at(kNewStream));
      multiplex_.addStream();
      player_.playUntil(at(kPauses));
      player_.pause(kPause);
      player_.playUntil(at(kNewTransportStream));
      multiplex_.changeTransportStream();
      player_.playUntil(at(1));
      memory_.push_back(figures_.residentSize());
    }
    listener_.waitForSilence();
  }

  /** What the kernel knows of the process, for as long as it is there. */
  void takeFigures() {
    share_ = 100 * figures_.processorSeconds() / seconds();
    peak_ = figures_.peakResidentSize();
  }

  void printFigures() const {
    const SptsChecker& seen = listener_.checker();
    const auto longest = [&](TableIntervals::Table table) {
      return seen.intervals().longest(table) * 1000 / tools::kSystemClock;
    };
    std::cout << seconds() << " s of " << kMegabits << " Mbit/s: " << share_
              << " % of one core; memory " << memory_.front() << " kB after the first cycle, "
              << memory_.back() << " kB after the last, " << peak_ << " kB at most; "
              << (seen.firstPicture() - begun_) / 1'000'000 << " ms to the first picture, "
              << seen.longestWay() / 1'000'000 << " ms for the slowest packet; PAT, PMT and SDT "
              << longest(TableIntervals::kPat) << ", " << longest(TableIntervals::kPmt) << " and "
              << longest(TableIntervals::kSdt) << " ms apart at most; " << seen.streamPackets()
              << " packets of streams, " << seen.tablePackets() << " of tables, "
              << seen.shortDatagrams() << " datagrams not full\nThe test was late "
              << player_.delays() << " times and has missed " << listener_.missed()
              << " datagrams. " << tools::joined(player_.faults(), "; ") << std::endl;
  }

  /** PMTs with one stream more than the one before. */
  [[nodiscard]] int grownPmts() const {
    const auto& pmts = listener_.checker().pmts();
    int grown = 0;
    for (size_t index = 1; index < pmts.size(); ++index) {
      grown += pmts[index].streams.size() == pmts[index - 1].streams.size() + 1 ? 1 : 0;
    }
    return grown;
  }

  /** Seconds of each transport stream that went by before the output had packets of it. */
  [[nodiscard]] std::vector<double> beginnings() const {
    std::vector<double> result;
    for (const auto& [era, position] : listener_.checker().beginnings()) {
      result.push_back(static_cast<double>(position - multiplex_.eras().at(era)) /
                       multiplex_.packetsPerSecond());
    }
    return result;
  }

  void expectSoundStream() {
    const SptsChecker& seen = listener_.checker();
    EXPECT_THAT(seen.faults().lines(), IsEmpty())
        << seen.faults().count() << " faults; " << extract_.standardError();
    if (listener_.missed() == 0) {
      EXPECT_EQ(seen.received(), multiplex_.sent());
    }
    EXPECT_EQ(grownPmts(), cycles_);
    EXPECT_EQ(seen.intervals().clockChanges(), cycles_);
    EXPECT_THAT(beginnings(), AllOf(SizeIs(cycles_ + 1), Each(Lt(kTablesComplete))));
    // Each pause and each other transport stream has one, and so has the end.
    EXPECT_LE(seen.shortDatagrams(),
              static_cast<uint64_t>(2 * cycles_ + 1) + static_cast<uint64_t>(player_.delays()));
  }

  void expectSteadyMemory() const {
    expectMemoryBelow(kMemory, peak_, "at most");
    if (cycles_ > 1) {
      expectMemoryBelow(memory_.front() + kGrowth, memory_.back(), "after the last cycle");
    }
  }

  const int cycles_ = std::max(1, static_cast<int>(seconds() / kCycle));
  LiveMultiplex multiplex_{kMegabits};
  SptsListener listener_{kOutputPort};
  ChildProcess extract_{{{tornelctlPath(), "extract", nameOf(kInputPort), "--service",
                          std::to_string(LiveMultiplex::kService), "-o", nameOf(kOutputPort)}}};
  MultiplexPlayer player_{multiplex_, nameOf(kInputPort)};
  ProcessFigures figures_{extract_.pid()};
  std::vector<int64_t> memory_;  // kilobytes after each cycle
  int64_t peak_ = 0;
  double share_ = 0;   // of one core, in percent
  int64_t begun_ = 0;  // when the source did
};

TEST_F(LiveExtract, LosesNothingWhateverHappensToItsSource) {
  ASSERT_TRUE(eventually([&] { return isReceiving(kInputPort) || !extract_.running(); }));
  ASSERT_TRUE(extract_.running()) << extract_.standardError();
  begun_ = stampTime();
  play();
  takeFigures();
  ASSERT_TRUE(extract_.running()) << extract_.standardError();
  ::kill(extract_.pid(), SIGINT);
  const auto end = extract_.waitForEnd();
  listener_.stop();
  printFigures();
  ASSERT_TRUE(end);
  EXPECT_EQ(end->exitStatus, 0) << extract_.standardError();
  EXPECT_THAT(
      extract_.standardOutput(),
      HasSubstr("output " + nameOf(kOutputPort) + ": " +
                std::to_string(listener_.checker().streamPackets()) + " packets of streams, " +
                std::to_string(listener_.checker().tablePackets()) + " packets of tables"));
  expectSoundStream();
  expectSteadyMemory();
}

}  // namespace
}  // namespace tevra::test
