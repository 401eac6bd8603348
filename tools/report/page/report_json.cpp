#include "tools/report/page/report_json.h"

#include "tools/report/facts/stream_traits.h"
#include "tools/tables/table_json.h"
#include "tools/text/json_text.h"

namespace tevra::tools::report {
namespace {

Json clockJson(const std::optional<StreamTime>& time) {
  return time ? Json(dateAndTime(*time)) : Json(nullptr);
}

Json pidJson(int pid, const PidCount& count, const Report& report) {
  Json json;
  json["pid"] = pid;
  json["packets"] = count.packets;
  json["share"] = report.share(count.packets);
  json["bitRate"] = orNull(report.bitRate(count.packets));
  json["continuityErrors"] = count.continuityErrors;
  json["scrambledPackets"] = count.scrambled;
  json["damagedPackets"] = count.transportErrors;
  json["pcrs"] = count.pcrs;
  json["crcErrors"] = count.crcErrors;
  json["damagedSections"] = count.otherSections;
  return json;
}

Json streamJson(const InputStream& stream) {
  Json json;
  json["pid"] = stream.pid;
  json["kind"] = kindWord(stream.kind);
  json["description"] = stream.description;
  json["languages"] = stream.languages;
  json["hasPcr"] = stream.hasPcr;
  return json;
}

Json outputStreamJson(const OutputStream& stream) {
  Json json;
  json["inputPid"] = orNull(stream.inputPid);
  json["outputPid"] = stream.outputPid;
  json["kind"] = kindWord(stream.kind);
  json["description"] = stream.description;
  json["languages"] = stream.languages;
  json["attributes"] = stream.attributes;
  json["made"] = stream.made;
  return json;
}

Json inputTableJson(const TableFact& fact) {
  Json json;
  json["pid"] = fact.pid;
  json["sections"] = fact.sections;
  json["times"] = fact.times;
  json["table"] = tableFieldsJson(tableFields(fact.table));
  return json;
}

Json outputTableJson(const TableFact& fact) {
  Json json;
  json["pid"] = fact.pid;
  json["packets"] = fact.sections;
  json["table"] = tableFieldsJson(tableFields(fact.table));
  return json;
}

Json outputJson(const Output& output) {
  Json json;
  json["serviceId"] = output.serviceId;
  json["name"] = output.name;
  json["transportStreamId"] = output.transportStreamId;
  json["originalNetworkId"] = output.originalNetworkId;
  json["streams"] = jsonList(output.streams, outputStreamJson);
  json["tables"] = jsonList(output.tables, outputTableJson);
  return json;
}

Json eventJson(const Event& event) {
  Json json;
  json["eventId"] = event.eventId;
  json["start"] = dateAndTime(event.start);
  json["seconds"] = event.duration;
  json["name"] = event.name;
  json["scheduled"] = event.isScheduled;
  json["present"] = event.isPresent;
  json["following"] = event.isFollowing;
  return json;
}

Json serviceJson(const Service& service) {
  Json json;
  json["serviceId"] = service.serviceId;
  json["type"] = service.typeName;
  json["name"] = service.name;
  json["provider"] = service.provider;
  json["pmtPid"] = orNull(service.pmtPid);
  json["hasPmt"] = service.hasPmt;
  json["streams"] = jsonList(service.streams, streamJson);
  json["output"] = service.output ? outputJson(*service.output) : Json(nullptr);
  json["events"] = jsonList(service.events, eventJson);
  json["eventsWithoutTime"] = service.timelessEvents;
  return json;
}

}  // namespace

std::string reportJson(const Report& report) {
  Json json;
  json["file"] = report.file;
  json["title"] = report.title;
  json["packets"] = report.packets;
  json["seconds"] = orNull(report.seconds);
  json["bitRate"] = orNull(report.bitRate(report.packets));
  json["transportStreamId"] = orNull(report.transportStreamId);
  json["originalNetworkId"] = orNull(report.originalNetworkId);
  json["networkId"] = orNull(report.networkId);
  json["networkName"] = report.networkName;
  json["firstClock"] = clockJson(report.firstClock);
  json["lastClock"] = clockJson(report.lastClock);
  json["tablesSent"] = report.tablesSent;
  json["faults"] = report.faults;
  json["pids"] = Json::array();
  for (const auto& [pid, count] : report.pids) {
    json["pids"].push_back(pidJson(pid, count, report));
  }
  json["services"] = jsonList(report.services, serviceJson);
  json["others"] = jsonList(report.others, streamJson);
  json["tables"] = jsonList(report.tables, inputTableJson);
  return indentedJson(json);
}

}  // namespace tevra::tools::report
