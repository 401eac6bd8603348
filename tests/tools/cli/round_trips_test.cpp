#include "tools/cli/round_trips.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using std::chrono::microseconds;
using std::chrono::nanoseconds;

TEST(RoundTrips, OfNoneAreNothing) {
  const RoundTripSummary summary = summarise({});
  EXPECT_EQ(summary.shortest, nanoseconds(0));
  EXPECT_EQ(summary.median, nanoseconds(0));
  EXPECT_EQ(summary.longest, nanoseconds(0));
}

TEST(RoundTrips, OfOneAreThatOne) {
  const RoundTripSummary summary = summarise({nanoseconds(7)});
  EXPECT_EQ(summary.shortest, nanoseconds(7));
  EXPECT_EQ(summary.median, nanoseconds(7));
  EXPECT_EQ(summary.longest, nanoseconds(7));
}

TEST(RoundTrips, AreSummedUpInWhateverOrderTheyCome) {
  const RoundTripSummary odd = summarise({nanoseconds(9), nanoseconds(1), nanoseconds(5)});
  EXPECT_EQ(odd.shortest, nanoseconds(1));
  EXPECT_EQ(odd.median, nanoseconds(5));
  EXPECT_EQ(odd.longest, nanoseconds(9));
  EXPECT_EQ(summarise({nanoseconds(4), nanoseconds(2), nanoseconds(8), nanoseconds(6)}).median,
            nanoseconds(4));
}

TEST(RoundTrips, AreTextInMilliseconds) {
  EXPECT_EQ(millisecondsText(nanoseconds(0)), "0.000");
  EXPECT_EQ(millisecondsText(microseconds(84)), "0.084");
  EXPECT_EQ(millisecondsText(std::chrono::seconds(75)), "75000.000");
}

}  // namespace
}  // namespace tevra::tools
