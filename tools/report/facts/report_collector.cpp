#include "tools/report/facts/report_collector.h"

#include <utility>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_values.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/output_answers.h"
#include "tools/outputs/spts_routes.h"
#include "tools/report/facts/event_list.h"
#include "tools/report/facts/output_facts.h"
#include "tools/report/facts/service_streams.h"
#include "tools/report/facts/stream_census.h"
#include "tools/report/facts/table_journal.h"
#include "tools/stream/files.h"
#include "tools/stream/stream_clock.h"
#include "tools/stream/ts_packet_reader.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Daemon = thrift::in_module::im_SIControlSrvIf;

/** Has `census` and `journal` look at what is read. */
StreamFeed feed(const std::string& path, Daemon& daemon, StreamCensus& census,
                TableJournal& journal) {
  InputFile file(path);
  const auto onPacket = [&census](const TsPacket& packet, size_t /*tablesSent*/) {
    census.push(packet);
    return true;
  };
  const auto onTable = [&](const SiTable& table, size_t sections) {
    journal.add(table, sections);
    if (const TOT* tot = std::get_if<TOT>(&table)) {
      if (const auto time = streamTime(tot->utcTime)) {
        census.noteClock(*time);
      }
    }
  };
  return StreamFeed::feed(file, path, daemon, onPacket, onTable);
}

/** How long the file lasts, by the PCRs of one PID, the same way as extract times its packets. */
double secondsOf(const std::string& path, int clockPid) {
  InputFile file(path);
  TsPacketReader reader(file);
  int64_t lastTime = 0;
  StreamClock clock(clockPid, [&](const TsPacket& /*packet*/, int64_t time, int64_t /*horizon*/) {
    lastTime = time;
  });
  TsPacket packet;
  while (reader.next(packet)) {
    clock.push(packet);
  }
  clock.finish();
  return static_cast<double>(lastTime) / static_cast<double>(kSystemClock);
}

void addCounts(const StreamFeed& stream, const StreamCensus& census, Report& report) {
  report.packets = stream.packets();
  report.tablesSent = stream.tables().sent();
  report.faults = stream.faults();
  report.pids = census.pids();
  report.firstClock = census.firstClock();
  report.lastClock = census.lastClock();
  for (auto& [pid, count] : report.pids) {
    const auto entry = stream.faultsByPid().find(pid);
    if (entry != stream.faultsByPid().end()) {
      count.crcErrors = entry->second.crcErrors;
      count.otherSections = entry->second.truncatedSections + entry->second.malformedSections;
    }
  }
}

void addIdentity(const StreamFeed& stream, const TableJournal& journal, Report& report) {
  report.transportStreamId = stream.inventory().transportStreamId();
  report.originalNetworkId = stream.inventory().originalNetworkId();
  if (journal.nit()) {
    report.networkId = journal.nit()->networkId;
    report.networkName = networkName(journal.nit()->descriptors);
  }
}

Service serviceOf(const ServiceSummary& summary, const TableJournal& journal,
                  std::optional<StreamTime> clock) {
  Service service;
  service.serviceId = summary.serviceId;
  service.typeName = summary.type == 0 ? "" : serviceTypeName(summary.type);
  if (summary.type != 0 && service.typeName.empty()) {
    service.typeName = "service type " + hex(summary.type, 2);
  }
  service.name = summary.name;
  service.provider = summary.provider;
  service.pmtPid = summary.pmtPid;
  const PMT* pmt = summary.hasPmt ? journal.pmt(summary.serviceId) : nullptr;
  service.hasPmt = pmt != nullptr;
  if (summary.pmtPid) {
    PMT none;
    none.pcrPid = kNullPid;
    service.streams = serviceStreams(*summary.pmtPid, pmt != nullptr ? *pmt : none);
  }
  EventList events = eventList(journal.eits(summary.serviceId), clock);
  service.events = std::move(events.events);
  service.timelessEvents = events.timeless;
  return service;
}

/** Asks for the service as it is; nothing when the daemon has no answer. */
std::optional<Output> ask(Daemon& daemon, const Service& service, Report& report) {
  OutputOptions options;
  options.inputSid = service.serviceId;
  if (!service.name.empty()) {
    options.name = service.name;
  }
  options.transportStreamId = report.transportStreamId;
  options.originalNetworkId = report.originalNetworkId;
  const OutputAnswers answer = askFor(daemon, {options});
  const std::string of = "service " + std::to_string(service.serviceId) + ": ";
  const auto entry = answer.find(options.resolvedGlobalSid());
  if (entry == answer.end()) {
    report.faults.push_back(of + "the daemon gives no output; its log may say why");
    return std::nullopt;
  }
  Output output = outputFacts(service.serviceId, entry->second);
  const SptsRoutes routes(entry->second.pidItems, output.tables.back().pid);
  for (const std::string& warning : routes.warnings()) {
    report.faults.push_back(of + warning);
  }
  return output;
}

}  // namespace

Collected collectReport(const std::string& file, Daemon& daemon) {
  StreamCensus census;
  TableJournal journal;
  const StreamFeed stream = feed(file, daemon, census, journal);
  Collected collected;
  Report& report = collected.report;
  report.file = file;
  addCounts(stream, census, report);
  addIdentity(stream, journal, report);
  report.tables = journal.facts();
  collected.refused = stream.tables().refused();
  for (const ServiceSummary& summary : stream.inventory().services()) {
    Service service = serviceOf(summary, journal, report.lastClock);
    if (service.hasPmt) {
      service.output = ask(daemon, service, report);
      collected.refused += service.output ? 0 : 1;
    }
    report.services.push_back(std::move(service));
  }
  report.others = otherStreams(report.pids, report.services, journal);
  if (census.clockPid() != kNullPid) {
    const double seconds = secondsOf(file, census.clockPid());
    if (seconds > 0) {  // else it is no file that can be read twice
      report.seconds = seconds;
    }
  }
  return collected;
}

}  // namespace tevra::tools::report
