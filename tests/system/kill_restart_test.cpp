#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <iostream>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "tests/fakes/fake_main_task.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"
#include "tests/system/kill_restart_load.h"
#include "tests/system/record_files.h"

// kill -9 at any moment of a running load. The environment sets how often (TORNEL_KILLS) and where
// to begin (TORNEL_SEED).

namespace tevra::test {
namespace {

using Clock = std::chrono::steady_clock;
using Milliseconds = std::chrono::milliseconds;

constexpr Milliseconds kLongestLoad{150};
constexpr Milliseconds kPromptAnswer{kSlowed ? 20'000 : 2'000};

uint32_t fromEnvironment(const char* name, uint32_t otherwise) {
  const char* value = std::getenv(name);
  return value == nullptr ? otherwise : static_cast<uint32_t>(std::strtoul(value, nullptr, 10));
}

/** What the kills did to one file. */
struct Tally {
  const char* file;
  std::array<int, 5> found = {};  ///< by Found
  int empty = 0;                  ///< of those half-written
};

class KillAndRestart : public testing::Test {
 protected:
  void killDuringLoad();
  void judgeFiles();
  void restart();
  void checkEits();
  void report() const;

  [[nodiscard]] std::string textOf(const std::string& file) const { return readText(root_ / file); }

  const uint32_t seed_ = fromEnvironment("TORNEL_SEED", std::random_device()());
  const int kills_ = static_cast<int>(fromEnvironment("TORNEL_KILLS", 25));

  void count(Tally& tally, Found found, const std::string& text);
  Milliseconds anyDelay() {
    const auto longest = std::chrono::microseconds(kLongestLoad).count();
    return std::chrono::duration_cast<Milliseconds>(
        std::chrono::microseconds(std::uniform_int_distribution<int64_t>(0, longest)(random_)));
  }
  [[nodiscard]] int64_t startsSeenByMainTask();

  DaemonSetup quiet_ = [] {
    DaemonSetup setup;
    setup.level = 4;
    return setup;
  }();
  fake::FakeMainTask mainTask_;
  TemporaryDirectory root_;
  Daemon daemon_{root_.path(), quiet_};
  std::mt19937 random_{seed_};
  RunningLoad load_{seed_ + 1};
  size_t notificationsSeen_ = 0;
  int64_t starts_ = 1;
  Milliseconds slowestAnswer_{0};
  Found eitsFound_ = Found::kUntouched;
  int versionsNotSaved_ = 0;  ///< last calls whose EITs were handed out but not saved
  std::array<Tally, 3> tallies_ = {Tally{"PIDRemap0"}, Tally{"TableStoreFile0"},
                                   Tally{"EITTableVersionStoreFile0"}};
};

void KillAndRestart::killDuringLoad() {
  const auto delay = anyDelay();
  std::thread caller([this] { load_.run(); });
  std::this_thread::sleep_for(delay);
  daemon_.kill();
  caller.join();
}

void KillAndRestart::count(Tally& tally, Found found, const std::string& text) {
  EXPECT_NE(found, Found::kWrong) << tally.file << " holds what no call explains:\n" << text;
  ++tally.found.at(static_cast<size_t>(found));
  tally.empty += found == Found::kHalfWritten && text.empty() ? 1 : 0;
}

void KillAndRestart::judgeFiles() {
  const auto& last = load_.lastCall();
  const std::string pids = textOf(pidRemapFile(0));
  const std::string tables = textOf(tableStoreFile(0));
  const std::string eits = textOf(eitVersionFile(0));
  count(tallies_[0], load_.pids().judge(pids, last), pids);
  count(tallies_[1], load_.tables().judge(tables, last), tables);
  eitsFound_ = load_.eits().judge(eits, last);
  count(tallies_[2], eitsFound_, eits);
}

void KillAndRestart::restart() {
  const auto before = Clock::now();
  daemon_.restart();
  ControlClient client;
  thrift::in_module::SIService answer;
  client->getSIData(answer);
  const auto taken = std::chrono::duration_cast<Milliseconds>(Clock::now() - before);
  EXPECT_LE(taken.count(), kPromptAnswer.count());
  slowestAnswer_ = std::max(slowestAnswer_, taken);
  ++starts_;
}

int64_t KillAndRestart::startsSeenByMainTask() {
  const auto methods = mainTask_.methods();
  return std::count(methods.begin(), methods.end(), "requestConfiguration");
}

/** MainTask has got the versions of all answered calls in their order, then some of the last. */
void KillAndRestart::checkEits() {
  // Notifications come in order: the new daemon's first is behind the old one's last.
  ASSERT_TRUE(eventually([this] { return startsSeenByMainTask() == starts_; }));
  std::vector<EitVersion> got;
  const auto received = mainTask_.received();
  for (; notificationsSeen_ < received.size(); ++notificationsSeen_) {
    const fake::Notification& notification = received[notificationsSeen_];
    if (notification.method.rfind("notifyEIT", 0) == 0) {
      const EIT& table = notification.eit;
      got.emplace_back(table.serviceId, table.tableId, table.version);
    }
  }
  std::vector<EitVersion> expected = load_.handedOut();
  ASSERT_GE(got.size(), expected.size());
  EitModel afterwards = load_.eits();
  const size_t answered = expected.size();
  if (load_.lastCall()) {
    const auto more = afterwards.apply(*load_.lastCall());
    expected.insert(expected.end(), more.begin(), more.end());
  }
  ASSERT_LE(got.size(), expected.size());
  EXPECT_TRUE(std::equal(got.begin(), got.end(), expected.begin()));
  versionsNotSaved_ += got.size() > answered && eitsFound_ != Found::kWholeWithLastCall ? 1 : 0;
}

void KillAndRestart::report() const {
  const int64_t kills = starts_ - 1;
  std::cout << "seed " << seed_ << ": " << kills << " kills, " << load_.answered()
            << " calls answered, slowest answer after a restart " << slowestAnswer_.count()
            << " ms, calls whose EIT versions were handed out but not saved " << versionsNotSaved_
            << '\n';
  for (const Tally& tally : tallies_) {
    const auto found = [&](Found what) { return tally.found.at(static_cast<size_t>(what)); };
    const int half = found(Found::kHalfWritten);
    std::cout << tally.file << ": half-written " << half << " of " << kills << " ("
              << 100 * half / kills << " %), of these empty " << tally.empty
              << "; whole without the last call " << found(Found::kWholeAsBefore)
              << ", whole with it " << found(Found::kWholeWithLastCall)
              << "; not saved since the start " << found(Found::kUntouched) << '\n';
    testing::Test::RecordProperty(std::string(tally.file) + "HalfWritten", half);
  }
  testing::Test::RecordProperty("Kills", std::to_string(kills));
  testing::Test::RecordProperty("Seed", std::to_string(seed_));
}

TEST_F(KillAndRestart, KeepsVersionsAndPidsWhereTheFilesSurviveWhole) {
  std::cout << "TORNEL_SEED=" << seed_ << '\n';
  load_.restart("", "", "");
  for (int kill = 0; kill < kills_ && !HasFailure(); ++kill) {
    SCOPED_TRACE("kill " + std::to_string(kill) + ", seed " + std::to_string(seed_));
    killDuringLoad();
    judgeFiles();
    const std::string pids = textOf(pidRemapFile(0));
    const std::string tables = textOf(tableStoreFile(0));
    const std::string eits = textOf(eitVersionFile(0));
    restart();
    checkEits();
    EXPECT_EQ(textOf(pidRemapFile(0)), pids);
    load_.restart(pids, tables, eits);
    for (const std::string& complaint : load_.complaints()) {
      ADD_FAILURE() << complaint;
    }
  }
  EXPECT_GT(load_.answered(), kills_);
  report();
}

}  // namespace
}  // namespace tevra::test
