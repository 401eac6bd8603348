#include "tools/cli/stop_signals.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <thread>

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;

/** What a second signal does that comes behind the action of the first. */
void signalTwice(milliseconds patience) {
  std::atomic<bool> done{false};
  const StopSignals signals([&] { done = true; }, patience);
  kill(getpid(), SIGINT);
  while (!done) {
    std::this_thread::yield();
  }
  std::this_thread::sleep_for(milliseconds(50));
  kill(getpid(), SIGINT);
  std::this_thread::sleep_for(milliseconds(200));
}

TEST(StopSignals, EndTheProcessWhereItDoesNotEndByItself) {
  testing::FLAGS_gtest_death_test_style = "threadsafe";
  EXPECT_EXIT(signalTwice(milliseconds(1)), testing::KilledBySignal(SIGINT), "");
}

TEST(StopSignals, DoNothingMoreWhenTheyComeAgainAtOnce) {
  signalTwice(std::chrono::hours(1));
}

}  // namespace
}  // namespace tevra::tools
