#include "tools/report/facts/report_data.h"

#include <algorithm>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {

PidCount Report::countOf(int pid) const {
  const auto entry = pids.find(pid);
  return entry == pids.end() ? PidCount() : entry->second;
}

std::optional<double> Report::bitRate(uint64_t packetCount) const {
  if (!seconds) {
    return std::nullopt;
  }
  return static_cast<double>(packetCount) * kTsPacketSize * 8 / *seconds;
}

double Report::share(uint64_t packetCount) const {
  return packets == 0 ? 0 : static_cast<double>(packetCount) / static_cast<double>(packets);
}

size_t Report::outputs() const {
  return static_cast<size_t>(
      std::count_if(services.begin(), services.end(),
                    [](const Service& service) { return service.output.has_value(); }));
}

}  // namespace tevra::tools::report
