#include "tools/cli/round_trips.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

TEST(RoundTrips, OfNoneAreNothing) {
  const RoundTripSummary summary = summarise({});
  EXPECT_EQ(summary.shortest, 0);
  EXPECT_EQ(summary.median, 0);
  EXPECT_EQ(summary.longest, 0);
}

TEST(RoundTrips, OfOneAreThatOne) {
  const RoundTripSummary summary = summarise({milliseconds(7)});
  EXPECT_EQ(summary.shortest, 7);
  EXPECT_EQ(summary.median, 7);
  EXPECT_EQ(summary.longest, 7);
}

TEST(RoundTrips, AreSummedUpInWhateverOrderTheyCome) {
  const RoundTripSummary odd = summarise({milliseconds(9), microseconds(84), milliseconds(5)});
  EXPECT_EQ(odd.shortest, 0.084);
  EXPECT_EQ(odd.median, 5);
  EXPECT_EQ(odd.longest, 9);
  EXPECT_EQ(summarise({milliseconds(4), milliseconds(2), milliseconds(8), milliseconds(6)}).median,
            4);
}

}  // namespace
}  // namespace tevra::tools
