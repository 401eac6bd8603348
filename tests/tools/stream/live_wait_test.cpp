#include "tools/stream/live_wait.h"

#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using std::chrono::milliseconds;

TEST(LiveWait, EndsWhenSomethingComesWithoutAWordOfSilence) {
  LiveOptions live;
  live.onSilence = [](milliseconds /*silence*/) { FAIL() << "something came"; };
  EXPECT_TRUE(waitFor(live, [](milliseconds most) { return most > milliseconds(0); }));
}

TEST(LiveWait, TellsHowLongNothingHasComeSoFar) {
  LiveOptions live;
  std::vector<milliseconds> told;
  live.onSilence = [&told](milliseconds silence) { told.push_back(silence); };
  EXPECT_TRUE(waitFor(live, [&told](milliseconds /*most*/) {
    std::this_thread::sleep_for(milliseconds(2));
    return told.size() == 3;
  }));
  EXPECT_GE(told.at(0), milliseconds(2));
  EXPECT_GE(told.at(2), milliseconds(6)) << "all of it, not what has been added";
}

TEST(LiveWait, EndsWhenStoppedAndAsksNothingMore) {
  LiveOptions live;
  int asked = 0;
  live.stopped = [&asked] { return ++asked > 2; };
  int tried = 0;
  EXPECT_FALSE(waitFor(live, [&tried](milliseconds /*most*/) { return ++tried > 2; }));
  EXPECT_EQ(2, tried);
}

}  // namespace
}  // namespace tevra::tools
