#include "tools/cli/round_trips.h"

#include <algorithm>
#include <iomanip>
#include <sstream>

namespace tevra::tools {

RoundTripSummary summarise(RoundTrips times) {
  if (times.empty()) {
    return {};
  }
  std::sort(times.begin(), times.end());
  return {times.front(), times[(times.size() - 1) / 2], times.back()};
}

std::string millisecondsText(std::chrono::nanoseconds time) {
  std::ostringstream text;
  text << std::fixed << std::setprecision(3)
       << std::chrono::duration<double, std::milli>(time).count();
  return text.str();
}

}  // namespace tevra::tools
