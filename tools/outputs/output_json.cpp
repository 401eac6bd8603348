#include "tools/outputs/output_json.h"

#include "tools/descriptors/descriptor_values.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/text/hex_digits.h"
#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

Json descriptorsJson(const std::vector<Descriptor>& descriptors) {
  return jsonList(descriptors, [](const Descriptor& descriptor) {
    return Json{{"tag", descriptor.tag}, {"data", hexDigits(descriptor.data)}};
  });
}

Json patJson(const PAT& pat) {
  Json json;
  json["transportStreamId"] = pat.transportStreamId;
  json["version"] = pat.version;
  json["currentNext"] = pat.currentNext;
  json["programs"] = jsonList(pat.programs, [](const PATProgram& program) {
    return Json{{"programNumber", program.programNumber}, {"pid", program.pid}};
  });
  return json;
}

Json serviceJson(const SDTService& service) {
  const ServiceNames names = serviceNames(service.descriptors);
  Json json;
  json["serviceId"] = service.serviceId;
  json["eitSchedule"] = service.eitSchedule;
  json["eitPresentFollowing"] = service.eitPresentFollowing;
  json["runningStatus"] = service.runningStatus;
  json["freeCA"] = service.freeCA;
  json["serviceType"] = names.type;
  json["providerName"] = names.provider;
  json["serviceName"] = names.name;
  json["descriptors"] = descriptorsJson(service.descriptors);
  return json;
}

Json sdtJson(const SDT& sdt) {
  Json json;
  json["tableId"] = sdt.tableId;
  json["transportStreamId"] = sdt.transportStreamId;
  json["version"] = sdt.version;
  json["currentNext"] = sdt.currentNext;
  json["originalNetworkId"] = sdt.originalNetworkId;
  json["services"] = jsonList(sdt.services, serviceJson);
  return json;
}

Json streamJson(const PMTES& stream) {
  Json json;
  json["streamType"] = stream.streamType;
  json["pid"] = stream.pid;
  json["languages"] = languages(stream.descriptors);
  json["descriptors"] = descriptorsJson(stream.descriptors);
  return json;
}

Json pmtJson(const PMT& pmt) {
  Json json;
  json["programNumber"] = pmt.programNumber;
  json["version"] = pmt.version;
  json["currentNext"] = pmt.currentNext;
  json["pcrPid"] = pmt.pcrPid;
  json["descriptors"] = descriptorsJson(pmt.descriptors);
  json["esList"] = jsonList(pmt.esList, streamJson);
  return json;
}

Json tablesJson(const OutputTables& tables) {
  Json json;
  json["outputParam1"] = tables.outputParam1;
  json["outputParam2"] = tables.outputParam2;
  json["pat"] = patJson(tables.dvbTables.pat);
  json["sdt"] = sdtJson(tables.dvbTables.sdt);
  json["pmt"] = pmtJson(tables.dvbTables.pmt);
  json["patPackets"] = jsonList(tables.patPackets, hexDigits);
  json["sdtPackets"] = jsonList(tables.sdtPackets, hexDigits);
  json["pmtPackets"] = jsonList(tables.pmtPackets, hexDigits);
  json["otherPackets"] = jsonList(tables.otherPackets, hexDigits);
  return json;
}

Json itemJson(const PIDItem& item) {
  Json json;
  json["inputPid"] = item.inputPid;
  json["outputPid"] = item.outputPid;
  json["attributes"] = item.attributes;
  json["attributeNames"] = pidAttributeNames(item.attributes);
  return json;
}

}  // namespace

std::string outputJson(const std::map<int32_t, SPTSConfiguration>& answer) {
  Json json = Json::object();
  for (const auto& [globalSid, configuration] : answer) {
    Json& entry = json[std::to_string(globalSid)];
    entry["pidItems"] = pidItemsJson(configuration.pidItems);
    entry["outputTables"] = tablesJson(configuration.outputTables);
  }
  return indentedJson(json);
}

Json pidItemsJson(const std::vector<PIDItem>& items) {
  return jsonList(items, itemJson);
}

}  // namespace tevra::tools
