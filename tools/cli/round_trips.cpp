#include "tools/cli/round_trips.h"

#include <algorithm>

#include "tools/text/decimals.h"

namespace tevra::tools {

RoundTripSummary summarise(RoundTrips times) {
  if (times.empty()) {
    return {};
  }
  std::sort(times.begin(), times.end());
  return {times.front(), times[(times.size() - 1) / 2], times.back()};
}

std::string millisecondsText(std::chrono::nanoseconds time) {
  return fixedText(std::chrono::duration<double, std::milli>(time).count(), 3);
}

}  // namespace tevra::tools
