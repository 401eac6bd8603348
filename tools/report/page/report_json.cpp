#include "tools/report/page/report_json.h"

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/check_words.h"
#include "tools/report/page/page_words.h"
#include "tools/tables/table_json.h"
#include "tools/text/json_text.h"

namespace tevra::tools::report {
namespace {

Json clockJson(const std::optional<StreamTime>& time) {
  return time ? Json(dateAndTime(*time)) : Json(nullptr);
}

Json pidJson(int pid, const PidCount& count, const Report& report) {
  return {{"pid", pid},
          {"packets", count.packets},
          {"share", report.share(count.packets)},
          {"bitRate", orNull(report.bitRate(count.packets))},
          {"continuityErrors", count.continuityErrors},
          {"scrambledPackets", count.scrambled},
          {"damagedPackets", count.transportErrors},
          {"pcrs", count.pcrs},
          {"pcrJumps", count.pcrJumps},
          {"widestPcrStep", orNull(count.widestPcrStep)},
          {"sections", count.sections},
          {"crcErrors", count.crcErrors},
          {"damagedSections", count.otherSections}};
}

Json intervalJson(const IntervalFact& fact) {
  return {{"what", fact.what},
          {"pid", fact.pid},
          {"serviceIds", jsonList(fact.serviceIds, [](int id) { return id; })},
          {"count", fact.count},
          {"min", fact.shortest},
          {"mean", fact.mean},
          {"max", fact.longest}};
}

Json kindJson(StreamKind kind, uint64_t packets, const Report& report) {
  return {{"kind", kindWord(kind)},
          {"packets", packets},
          {"share", report.share(packets)},
          {"bitRate", orNull(report.bitRate(packets))}};
}

Json streamJson(const InputStream& stream) {
  return {{"pid", stream.pid},
          {"kind", kindWord(stream.kind)},
          {"description", stream.description},
          {"languages", stream.languages},
          {"hasPcr", stream.hasPcr}};
}

Json outputStreamJson(const OutputStream& stream) {
  return {{"inputPid", orNull(stream.inputPid)},
          {"outputPid", stream.outputPid},
          {"kind", kindWord(stream.kind)},
          {"description", stream.description},
          {"languages", stream.languages},
          {"attributes", stream.attributes},
          {"made", stream.made}};
}

Json inputTableJson(const TableFact& fact) {
  return {{"pid", fact.pid},
          {"sections", fact.sections},
          {"times", fact.times},
          {"arrivals", fact.arrivals},
          {"table", tableFieldsJson(tableFields(fact.table))}};
}

Json outputTableJson(const TableFact& fact) {
  return {{"pid", fact.pid},
          {"packets", fact.sections},
          {"table", tableFieldsJson(tableFields(fact.table))}};
}

Json outputJson(const Output& output) {
  return {{"serviceId", output.serviceId},
          {"name", output.name},
          {"transportStreamId", output.transportStreamId},
          {"originalNetworkId", output.originalNetworkId},
          {"streams", jsonList(output.streams, outputStreamJson)},
          {"tables", jsonList(output.tables, outputTableJson)},
          {"intervals", jsonList(output.intervals, intervalJson)}};
}

Json eventJson(const Event& event) {
  return {{"eventId", event.eventId},       {"start", dateAndTime(event.start)},
          {"seconds", event.duration},      {"name", event.name},
          {"scheduled", event.isScheduled}, {"present", event.isPresent},
          {"following", event.isFollowing}};
}

Json serviceJson(const Service& service, const Report& report) {
  const uint64_t packets = report.packetsOf(service);
  return {{"serviceId", service.serviceId},
          {"type", service.typeName},
          {"name", service.name},
          {"provider", service.provider},
          {"pmtPid", orNull(service.pmtPid)},
          {"hasPmt", service.hasPmt},
          {"packets", packets},
          {"share", report.share(packets)},
          {"bitRate", orNull(report.bitRate(packets))},
          {"streams", jsonList(service.streams, streamJson)},
          {"output", service.output ? outputJson(*service.output) : Json(nullptr)},
          {"events", jsonList(service.events, eventJson)},
          {"eventsWithoutTime", service.timelessEvents}};
}

}  // namespace

std::string reportJson(const Report& report) {
  const auto kind = [&](const auto& entry) { return kindJson(entry.first, entry.second, report); };
  const auto pid = [&](const auto& entry) { return pidJson(entry.first, entry.second, report); };
  const auto service = [&](const Service& entry) { return serviceJson(entry, report); };
  return indentedJson({{"file", report.file},
                       {"title", titleOf(report)},
                       {"packets", report.packets},
                       {"seconds", orNull(report.seconds)},
                       {"bitRate", orNull(report.bitRate(report.packets))},
                       {"transportStreamId", orNull(report.transportStreamId)},
                       {"originalNetworkId", orNull(report.originalNetworkId)},
                       {"networkId", orNull(report.networkId)},
                       {"networkName", report.networkName},
                       {"firstClock", clockJson(report.firstClock)},
                       {"lastClock", clockJson(report.lastClock)},
                       {"tablesSent", report.tablesSent},
                       {"faults", report.faultLines()},
                       {"kinds", jsonList(report.packetsByKind(), kind)},
                       {"pids", jsonList(report.pids, pid)},
                       {"services", jsonList(report.services, service)},
                       {"others", jsonList(report.others, streamJson)},
                       {"tables", jsonList(report.tables, inputTableJson)},
                       {"checks", checksJson(report.checks)},
                       {"intervals", jsonList(report.intervals, intervalJson)}});
}

}  // namespace tevra::tools::report
