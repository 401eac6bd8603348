#pragma once

#include <chrono>
#include <string>
#include <vector>

namespace tevra::tools {

/** How long calls took, from the first byte sent to the last byte of the answer. */
using RoundTrips = std::vector<std::chrono::nanoseconds>;

/** The three figures that tell most about them; all zero without any. */
struct RoundTripSummary {
  std::chrono::nanoseconds shortest{0};  ///< of all
  std::chrono::nanoseconds median{0};    ///< the lower one of an even number
  std::chrono::nanoseconds longest{0};   ///< of all
};

/** The figures of `times`, in any order. */
[[nodiscard]] RoundTripSummary summarise(RoundTrips times);

/** In milliseconds with three decimals, without a unit: "0.084". */
[[nodiscard]] std::string millisecondsText(std::chrono::nanoseconds time);

}  // namespace tevra::tools
