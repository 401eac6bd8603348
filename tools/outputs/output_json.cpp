#include "tools/outputs/output_json.h"

#include "tools/outputs/pid_attributes.h"
#include "tools/tables/table_json.h"
#include "tools/text/json_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

Json tablesJson(const OutputTables& tables) {
  return {{"outputParam1", tables.outputParam1},
          {"outputParam2", tables.outputParam2},
          {"pat", tableFieldsJson(tableFields(tables.dvbTables.pat))},
          {"sdt", tableFieldsJson(tableFields(tables.dvbTables.sdt))},
          {"pmt", tableFieldsJson(tableFields(tables.dvbTables.pmt))},
          {"patPackets", jsonList(tables.patPackets, hexDigits)},
          {"sdtPackets", jsonList(tables.sdtPackets, hexDigits)},
          {"pmtPackets", jsonList(tables.pmtPackets, hexDigits)},
          {"otherPackets", jsonList(tables.otherPackets, hexDigits)}};
}

Json itemJson(const PIDItem& item) {
  return {{"inputPid", item.inputPid},
          {"outputPid", item.outputPid},
          {"attributes", item.attributes},
          {"attributeNames", pidAttributeNames(item.attributes)}};
}

}  // namespace

std::string outputJson(const std::map<int32_t, SPTSConfiguration>& answer) {
  Json json = Json::object();
  for (const auto& [globalSid, configuration] : answer) {
    json[std::to_string(globalSid)] = {{"pidItems", pidItemsJson(configuration.pidItems)},
                                       {"outputTables", tablesJson(configuration.outputTables)}};
  }
  return indentedJson(json);
}

Json pidItemsJson(const std::vector<PIDItem>& items) {
  return jsonList(items, itemJson);
}

}  // namespace tevra::tools
