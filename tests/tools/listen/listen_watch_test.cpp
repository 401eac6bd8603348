#include "tools/listen/listen_watch.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <future>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using Reason = ListenWatch::Reason;
using std::chrono::milliseconds;
using std::chrono::seconds;

class ListenWatchTest : public testing::Test {
 protected:
  /** A watch that keeps its reason. */
  std::unique_ptr<ListenWatch> watch(const ListenWatch::Limits& limits) {
    return std::make_unique<ListenWatch>(limits,
                                         [this](Reason reason) { reason_.set_value(reason); });
  }

  bool hasEndedWithin(milliseconds time) {
    return future_.wait_for(time) == std::future_status::ready;
  }

  std::promise<Reason> reason_;
  std::future<Reason> future_ = reason_.get_future();
};

TEST_F(ListenWatchTest, WithoutLimitsNeverEnds) {
  const auto unlimited = watch({});
  EXPECT_FALSE(hasEndedWithin(milliseconds(100)));
}

TEST_F(ListenWatchTest, EndsAfterSilence) {
  const auto silent = watch({seconds(1), {}});
  ASSERT_TRUE(hasEndedWithin(seconds(30)));
  EXPECT_EQ(Reason::kSilence, future_.get());
}

TEST_F(ListenWatchTest, WaitsOnWhenSomethingComes) {
  const auto start = std::chrono::steady_clock::now();
  const auto touched = watch({seconds(2), {}});
  std::this_thread::sleep_for(seconds(1));
  touched->touch();
  ASSERT_TRUE(hasEndedWithin(seconds(30)));
  EXPECT_GE(std::chrono::steady_clock::now() - start, seconds(3));
}

TEST_F(ListenWatchTest, EndsWhenTheTimeIsOverWhateverComes) {
  const auto timed = watch({seconds(100), seconds(1)});
  timed->touch();
  ASSERT_TRUE(hasEndedWithin(seconds(30)));
  EXPECT_EQ(Reason::kTimeIsOver, future_.get());
}

TEST_F(ListenWatchTest, EndsWhenNobodyReadsTheOutputAnyMore) {
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe(ends.data()));
  const auto piped = watch({{}, {}, ends[1]});
  EXPECT_FALSE(hasEndedWithin(milliseconds(50)));
  close(ends[0]);
  ASSERT_TRUE(hasEndedWithin(seconds(30)));
  EXPECT_EQ(Reason::kNobodyReads, future_.get());
  close(ends[1]);
}

TEST_F(ListenWatchTest, DoesNotMindAnOutputThatIsAFileOrNotOpen) {
  const int file = open("/dev/null", O_WRONLY | O_CLOEXEC);
  for (const int output : {file, 1000000}) {
    const auto watched = watch({{}, {}, output});
    EXPECT_FALSE(hasEndedWithin(milliseconds(50))) << output;
  }
  close(file);
}

}  // namespace
}  // namespace tevra::tools
