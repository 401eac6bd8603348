#include "tests/tools/report/report_samples.h"

#include <string>

namespace tevra::tools::report::test {
namespace {

constexpr int kEmmPid = 0x1F00;
constexpr int kStuffingPid = 0x1FFF;
constexpr uint64_t kPackets = 100;

OutputStream outputStream(int inputPid, int outputPid, StreamKind kind, const std::string& what) {
  OutputStream stream;
  stream.inputPid = inputPid;
  stream.outputPid = outputPid;
  stream.kind = kind;
  stream.description = what;
  return stream;
}

InputStream inputStream(int pid, StreamKind kind, const std::string& what) {
  InputStream stream;
  stream.pid = pid;
  stream.kind = kind;
  stream.description = what;
  return stream;
}

Service serviceOf(int id, size_t streams, Report& report) {
  Service service;
  service.serviceId = id;
  service.name = "Service " + std::to_string(id);
  service.hasPmt = true;
  Output& output = service.output.emplace();
  output.serviceId = id;
  output.name = service.name;
  for (const int pid : {0, 17}) {
    OutputStream& made = output.streams.emplace_back();
    made.outputPid = pid;
    made.made = true;
  }
  const int first = 0x20 + id * 20;
  for (int place = 0; place <= static_cast<int>(streams); ++place) {
    const StreamKind kind = place == 0 ? StreamKind::kTables : StreamKind::kVideo;
    service.streams.push_back(inputStream(first + place, kind, "stream"));
    output.streams.push_back(outputStream(first + place, 100 + place, kind, "stream"));
    output.streams.back().made = place == 0;
    report.pids[first + place].packets = kPackets * static_cast<uint64_t>(place + 1);
  }
  output.streams.push_back(outputStream(kEmmPid, 300, StreamKind::kConditionalAccess, "EMM"));
  return service;
}

}  // namespace

Report reportOf(size_t services, size_t streams) {
  Report report;
  report.file = "some.ts";
  for (size_t place = 0; place < services; ++place) {
    report.services.push_back(serviceOf(static_cast<int>(place) + 1, streams, report));
  }
  report.others = {inputStream(0, StreamKind::kTables, "PAT"),
                   inputStream(kEmmPid, StreamKind::kConditionalAccess, "EMM of 0x0071"),
                   inputStream(kStuffingPid, StreamKind::kStuffing, "null packets")};
  report.pids[0].packets = kPackets;
  report.pids[kEmmPid].packets = kPackets;
  report.pids[kStuffingPid].packets = 1'000'000;
  for (const auto& [pid, count] : report.pids) {
    report.packets += count.packets;
  }
  return report;
}

std::vector<Event> eventsOf(size_t count, int64_t minutes) {
  std::vector<Event> events;
  for (size_t place = 0; place < count; ++place) {
    Event& event = events.emplace_back();
    event.eventId = static_cast<int>(place);
    event.start = kNoon + static_cast<int64_t>(place) * minutes * 60;
    event.duration = minutes * 60;
    event.name = "Event " + std::to_string(place);
    event.isScheduled = true;
  }
  return events;
}

}  // namespace tevra::tools::report::test
