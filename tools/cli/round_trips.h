#pragma once

#include <chrono>
#include <vector>

namespace tevra::tools {

/** How long calls took, from the first byte sent to the last byte of the answer. */
using RoundTrips = std::vector<std::chrono::nanoseconds>;

/** The three figures that tell most about them, in milliseconds; all zero without any. */
struct RoundTripSummary {
  double shortest = 0;  ///< of all
  double median = 0;    ///< the lower one of an even number
  double longest = 0;   ///< of all
};

/** The figures of `times`, in any order. */
[[nodiscard]] RoundTripSummary summarise(RoundTrips times);

}  // namespace tevra::tools
