#include "tools/cli/progress.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class ProgressTest : public testing::Test {
 protected:
  Progress make(bool terminal, std::optional<uint64_t> totalBytes) {
    Progress::Options options;
    options.terminal = terminal;
    options.totalBytes = totalBytes;
    return {out_, options, [this] { return now_; }};
  }

  std::ostringstream out_;
  Progress::Clock::time_point now_;
};

TEST_F(ProgressTest, SaysNothingOfShortWork) {
  Progress progress = make(false, 1000);
  now_ += milliseconds(4999);
  progress.update(500, 1);
  progress.finish();
  EXPECT_EQ("", out_.str());
}

TEST_F(ProgressTest, IsALineEveryFiveSecondsElsewhere) {
  Progress progress = make(false, 40'000'000);
  now_ += seconds(5);
  progress.update(10'000'000, 7);
  now_ += seconds(4);
  progress.update(18'000'000, 8);
  now_ += seconds(1);
  progress.update(20'000'000, 1);
  progress.finish();
  EXPECT_EQ(
      "25 %, 2.0 MB/s, 7 tables sent, 15 s left\n"
      "50 %, 2.0 MB/s, 1 table sent, 10 s left\n",
      out_.str());
}

TEST_F(ProgressTest, KnowsNoShareOfAStreamWithoutEnd) {
  Progress progress = make(false, std::nullopt);
  now_ += seconds(5);
  progress.update(10'000'000, 0);
  EXPECT_EQ("10.0 MB, 2.0 MB/s, 0 tables sent\n", out_.str());
}

TEST_F(ProgressTest, IsABarOnATerminalAndGoneInTheEnd) {
  Progress progress = make(true, 2000);
  now_ += milliseconds(199);
  progress.update(500, 0);
  EXPECT_EQ("", out_.str());
  now_ += milliseconds(1);
  progress.update(1000, 3);
  EXPECT_EQ("\r\033[K[###############---------------] 50 %, 0.0 MB/s, 3 tables sent, 0 s left",
            out_.str());
  progress.finish();
  EXPECT_EQ("\r\033[K", out_.str().substr(out_.str().size() - 4));
}

TEST_F(ProgressTest, NeverPassesAHundredPercent) {
  Progress progress = make(true, 1000);
  now_ += seconds(1);
  progress.update(1188, 0);  // the file has grown
  EXPECT_EQ("\r\033[K[##############################] 100 %, 0.0 MB/s, 0 tables sent", out_.str());
}

}  // namespace
}  // namespace tevra::tools
