#include "tools/cli/round_trips.h"

#include <algorithm>

namespace tevra::tools {

RoundTripSummary summarise(RoundTrips times) {
  if (times.empty()) {
    return {};
  }
  std::sort(times.begin(), times.end());
  const auto milliseconds = [&times](size_t place) {
    return std::chrono::duration<double, std::milli>(times[place]).count();
  };
  return {milliseconds(0), milliseconds((times.size() - 1) / 2), milliseconds(times.size() - 1)};
}

}  // namespace tevra::tools
