#include "tools/outputs/output_json.h"

#include "tools/outputs/pid_attributes.h"
#include "tools/tables/table_json.h"
#include "tools/text/json_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

Json tablesJson(const OutputTables& tables) {
  Json json;
  json["outputParam1"] = tables.outputParam1;
  json["outputParam2"] = tables.outputParam2;
  json["pat"] = tableFieldsJson(tableFields(tables.dvbTables.pat));
  json["sdt"] = tableFieldsJson(tableFields(tables.dvbTables.sdt));
  json["pmt"] = tableFieldsJson(tableFields(tables.dvbTables.pmt));
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
