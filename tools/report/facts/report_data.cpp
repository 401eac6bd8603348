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

std::map<StreamKind, uint64_t> Report::packetsByKind() const {
  std::map<int, StreamKind> kinds;
  for (const Service& service : services) {
    for (const InputStream& stream : service.streams) {
      kinds.emplace(stream.pid, stream.kind);
    }
  }
  for (const InputStream& stream : others) {
    kinds.emplace(stream.pid, stream.kind);
  }
  std::map<StreamKind, uint64_t> sums;
  for (const auto& [pid, kind] : kinds) {
    sums[kind] += countOf(pid).packets;
  }
  return sums;
}

uint64_t Report::packetsOf(const Service& service) const {
  uint64_t sum = 0;
  for (const InputStream& stream : service.streams) {
    sum += countOf(stream.pid).packets;
  }
  return sum;
}

size_t Report::outputs() const {
  return static_cast<size_t>(
      std::count_if(services.begin(), services.end(),
                    [](const Service& service) { return service.output.has_value(); }));
}

}  // namespace tevra::tools::report
