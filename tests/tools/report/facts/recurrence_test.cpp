#include "tools/report/facts/recurrence.h"

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

TEST(Recurrence, MeasuresWhatNeedNotComeAndMissesNothing) {
  Recurrence recurrence(10);
  for (const int64_t time : {5, 25, 30}) {
    recurrence.come(time);
  }
  EXPECT_EQ(2U, recurrence.intervals());
  EXPECT_EQ(5, recurrence.shortest());
  EXPECT_EQ(20, recurrence.longest());
  EXPECT_EQ(25, recurrence.sum());
  EXPECT_EQ(0U, recurrence.misses());
  EXPECT_FALSE(recurrence.longestWait().has_value());
}

TEST(Recurrence, WaitsFromWhereItHasToCome) {
  Recurrence recurrence(10);
  recurrence.come(0);
  recurrence.expect(50);
  recurrence.come(60);
  recurrence.expect(65);
  recurrence.come(70);
  EXPECT_EQ(0U, recurrence.misses());
  EXPECT_EQ(10, recurrence.longestWait());
  recurrence.come(81);
  EXPECT_EQ(1U, recurrence.misses());
  EXPECT_EQ(11, recurrence.longestWait());
}

TEST(Recurrence, MissesWhatDoesNotComeToTheEnd) {
  Recurrence recurrence(10);
  recurrence.expect(0);
  recurrence.expectNoMore(30);
  recurrence.expectNoMore(90);
  EXPECT_EQ(1U, recurrence.misses());
  EXPECT_EQ(30, recurrence.longestWait());
}

TEST(Recurrence, CountsNoIntervalOverATimeInWhichItNeedNotCome) {
  Recurrence recurrence(10);
  recurrence.expect(0);
  recurrence.come(5);
  recurrence.expectNoMore(10);
  recurrence.expect(100);
  recurrence.come(105);
  EXPECT_EQ(0U, recurrence.intervals());
  EXPECT_EQ(0U, recurrence.misses());
}

}  // namespace
}  // namespace tevra::tools::report
