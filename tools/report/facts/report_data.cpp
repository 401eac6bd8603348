#include "tools/report/facts/report_data.h"

#include <algorithm>

#include "tools/stream/ts_packet.h"
#include "tools/text/words.h"

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

std::vector<std::string> Report::faultLines() const {
  PidCount sum;
  size_t discontinuousPids = 0;
  size_t scrambledPids = 0;
  for (const auto& [pid, count] : pids) {
    sum.continuityErrors += count.continuityErrors;
    sum.scrambled += count.scrambled;
    sum.transportErrors += count.transportErrors;
    discontinuousPids += count.continuityErrors != 0 ? 1 : 0;
    scrambledPids += count.scrambled != 0 ? 1 : 0;
  }
  std::vector<std::string> lines;
  if (sum.continuityErrors != 0) {
    lines.push_back(counted(sum.continuityErrors, "continuity error") + " on " +
                    counted(discontinuousPids, "PID"));
  }
  if (sum.transportErrors != 0) {
    lines.push_back(counted(sum.transportErrors, "packet") + " flagged as damaged");
  }
  if (sum.scrambled != 0) {
    lines.push_back(counted(sum.scrambled, "scrambled packet") + " on " +
                    counted(scrambledPids, "PID"));
  }
  lines.insert(lines.end(), faults.begin(), faults.end());
  return lines;
}

}  // namespace tevra::tools::report
