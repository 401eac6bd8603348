#include "tools/extract/extract_json.h"

#include "tools/outputs/output_json.h"
#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

Json pidsJson(const std::map<int, uint64_t>& pidPackets) {
  Json list = Json::array();
  for (const auto& [pid, packets] : pidPackets) {
    list.push_back({{"pid", pid}, {"packets", packets}});
  }
  return list;
}

Json fileJson(const SptsFile& file) {
  Json json;
  json["globalSID"] = file.output.resolvedGlobalSid();
  json["inputSID"] = file.output.inputSid;
  json["outputSID"] = file.output.resolvedOutputSid();
  json["serviceName"] = file.output.resolvedName();
  json["file"] = file.file;
  json["streamPackets"] = file.streamPackets;
  json["tablePackets"] = file.tablePackets;
  json["seconds"] = file.seconds;
  json["pidItems"] = pidItemsJson(file.configuration.pidItems);
  json["pids"] = pidsJson(file.pidPackets);
  json["warnings"] = file.warnings;
  return json;
}

}  // namespace

std::string extractJson(const std::string& source, uint64_t packets, uint64_t tablesSent,
                        const std::vector<SptsFile>& outputs) {
  Json json;
  json["source"] = source;
  json["packets"] = packets;
  json["tablesSent"] = tablesSent;
  json["outputs"] = jsonList(outputs, fileJson);
  return indentedJson(json);
}

}  // namespace tevra::tools
