#include "tools/feed/feed_json.h"

#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

Json tableJson(const TableFeeder::Sent& sent) {
  Json json;
  json["table"] = sent.kind;
  json["of"] = sent.what;
  json["last"] = sent.last;
  json["sections"] = sent.sections;
  json["sent"] = sent.count;
  return json;
}

Json serviceJson(const ServiceSummary& service) {
  Json json;
  json["serviceId"] = service.serviceId;
  json["type"] = service.type;
  json["name"] = service.name;
  json["provider"] = service.provider;
  json["pmtPid"] = orNull(service.pmtPid);
  json["hasPmt"] = service.hasPmt;
  json["streams"] = service.streams;
  json["audioLanguages"] = service.audioLanguages;
  return json;
}

}  // namespace

std::string feedJson(const std::string& source, const StreamFeed& stream) {
  Json json;
  json["source"] = source;
  json["packets"] = stream.packets();
  json["tablesSent"] = stream.tables().sent();
  json["tablesRefused"] = stream.tables().refused();
  json["discontinuities"] = stream.statistics().discontinuities;
  json["crcErrors"] = stream.statistics().crcErrors;
  json["truncatedSections"] = stream.statistics().truncatedSections;
  json["malformedSections"] = stream.statistics().malformedSections;
  json["tables"] = Json::array();
  for (const TableFeeder::Sent& sent : stream.tables().account()) {
    json["tables"].push_back(tableJson(sent));
  }
  json["services"] = Json::array();
  for (const ServiceSummary& service : stream.inventory().services()) {
    json["services"].push_back(serviceJson(service));
  }
  return indentedJson(json);
}

}  // namespace tevra::tools
