#include "tools/report/facts/report_collector.h"

#include <algorithm>
#include <utility>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_values.h"
#include "tools/feed/table_feeder.h"
#include "tools/outputs/output_answers.h"
#include "tools/outputs/spts_routes.h"
#include "tools/report/facts/event_list.h"
#include "tools/report/facts/output_facts.h"
#include "tools/report/facts/service_streams.h"
#include "tools/report/facts/stream_checks.h"
#include "tools/report/facts/stream_survey.h"
#include "tools/si/stream_faults.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Daemon = thrift::in_module::im_SIControlSrvIf;

/** What was wrong with packets and tables, but the wrong CRCs, which are counted by PID. */
std::vector<std::string> faultsOf(const ByteSource& source, const StreamSurvey& survey,
                                  const TableFeeder& feeder) {
  SectionFaults sections = sumOf(survey.demux().faults());
  sections.crcErrors = 0;
  std::vector<std::string> faults =
      streamFaults(source, survey.reader(), survey.demux(), sections, "not sent");
  if (feeder.refused() != 0) {
    faults.push_back(counted(feeder.refused(), "table") + " refused by the daemon");
  }
  return faults;
}

std::map<int, PidCount> countsOf(const StreamSurvey& survey) {
  std::map<int, PidCount> pids = survey.census().pids();
  for (auto& [pid, count] : pids) {
    const auto entry = survey.demux().faults().find(pid);
    if (entry != survey.demux().faults().end()) {
      count.sections = survey.sections().sections(pid);
      count.crcErrors = entry->second.crcErrors;
      count.otherSections = entry->second.truncatedSections + entry->second.malformedSections;
    }
  }
  return pids;
}

std::vector<TableFact> tablesOf(const StreamSurvey& survey) {
  std::vector<TableFact> tables = survey.journal().facts();
  for (TableFact& fact : tables) {
    const auto [kind, subject, tableId] = identityOf(fact.table).place();
    fact.arrivals = survey.sections().arrivals(tableId, subject);
  }
  return tables;
}

void addStream(const StreamSurvey& survey, Report& report) {
  report.packets = survey.reader().packets();
  report.seconds = survey.seconds();
  report.pids = countsOf(survey);
  report.firstClock = survey.census().firstClock();
  report.lastClock = survey.census().lastClock();
  report.tables = tablesOf(survey);
  report.checks = checksOf(survey);
  report.transportStreamId = survey.inventory().transportStreamId();
  report.originalNetworkId = survey.inventory().originalNetworkId();
  if (const auto& nit = survey.journal().nit()) {
    report.networkId = nit->networkId;
    report.networkName = networkName(nit->descriptors);
  }
}

/** Whether the service's PMT or its PCRs come on the PID, whichever is meant. */
bool isOf(const Service& service, const IntervalFact& fact) {
  if (fact.what == "PMT") {
    return service.pmtPid == fact.pid;
  }
  return fact.what == "PCR" &&
         std::any_of(service.streams.begin(), service.streams.end(),
                     [&](const auto& stream) { return stream.hasPcr && stream.pid == fact.pid; });
}

/** The PCRs of an output are those of the PID that it carries, and by them go its tables. */
void addOutputIntervals(const StreamSurvey& survey, const std::vector<IntervalFact>& input,
                        Output& output) {
  const auto clock =
      std::find_if(output.streams.begin(), output.streams.end(), [](const OutputStream& stream) {
        return std::count(stream.attributes.begin(), stream.attributes.end(), "PCR") != 0;
      });
  if (clock == output.streams.end() || !clock->inputPid) {
    return;
  }
  output.intervals = tableIntervalsOf(survey, *clock->inputPid, output.tables.back().pid);
  for (const IntervalFact& fact : input) {
    if (fact.what == "PCR" && fact.pid == clock->inputPid) {
      output.intervals.emplace_back(fact).pid = clock->outputPid;
    }
  }
  for (IntervalFact& fact : output.intervals) {
    fact.serviceIds = {output.serviceId};
  }
}

void addIntervals(const StreamSurvey& survey, Report& report) {
  report.intervals = intervalsOf(survey);
  for (Service& service : report.services) {
    for (IntervalFact& fact : report.intervals) {
      if (isOf(service, fact)) {
        fact.serviceIds.push_back(service.serviceId);
      }
    }
    if (service.output) {
      addOutputIntervals(survey, report.intervals, *service.output);
    }
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
    report.faults.push_back(of + "there is no output; the log of a daemon may say why");
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

Collected collectReport(ByteSource& source, const std::string& name, Daemon& daemon,
                        int pidPeriod) {
  TableFeeder feeder(daemon);
  const StreamSurvey survey(source, pidPeriod, [&](const SiTable& table, size_t sections) {
    feeder.feed(table, sections);
  });
  if (feeder.sent() == 0) {
    throw ToolError(source.explainNothing(name, survey.reader().packets()));
  }
  Collected collected;
  Report& report = collected.report;
  report.file = name;
  report.tablesSent = feeder.sent();
  report.faults = faultsOf(source, survey, feeder);
  addStream(survey, report);
  collected.refused = feeder.refused();
  for (const ServiceSummary& summary : survey.inventory().services()) {
    Service service = serviceOf(summary, survey.journal(), report.lastClock);
    if (service.hasPmt) {
      service.output = ask(daemon, service, report);
      collected.refused += service.output ? 0 : 1;
    }
    report.services.push_back(std::move(service));
  }
  report.others = otherStreams(report.pids, report.services, survey.journal());
  addIntervals(survey, report);
  return collected;
}

Verdict checkStream(ByteSource& source, const std::string& name, int pidPeriod) {
  const StreamSurvey survey(source, pidPeriod,
                            [](const SiTable& /*table*/, size_t /*sections*/) {});
  if (survey.reader().packets() == 0) {
    throw ToolError(source.explainNothing(name, 0));
  }
  return {name, survey.reader().packets(), survey.seconds(), checksOf(survey)};
}

}  // namespace tevra::tools::report
