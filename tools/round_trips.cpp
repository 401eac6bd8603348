#include "tools/round_trips.h"

#include <algorithm>
#include <cstdio>

namespace tevra::tools {

RoundTripSummary summarise(RoundTrips times) {
  if (times.empty()) {
    return {};
  }
  std::sort(times.begin(), times.end());
  return {times.front(), times[(times.size() - 1) / 2], times.back()};
}

std::string millisecondsText(std::chrono::nanoseconds time) {
  char text[32];
  const double milliseconds = std::chrono::duration<double, std::milli>(time).count();
  (void)std::snprintf(text, sizeof text, "%.3f", milliseconds);  // longer than any time
  return text;
}

}  // namespace tevra::tools
