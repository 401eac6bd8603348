#include "tools/extract/extract_json.h"

#include "tools/outputs/output_json.h"
#include "tools/text/json_text.h"

namespace tevra::tools {
namespace {

Json pidsJson(const SptsFile& file) {
  Json list = Json::array();
  for (const auto& [pid, packets] : file.pidPackets) {
    const auto gaps = file.pidGaps.find(pid);
    list.push_back({{"pid", pid},
                    {"packets", packets},
                    {"gaps", gaps == file.pidGaps.end() ? 0 : gaps->second}});
  }
  return list;
}

Json fileJson(const SptsFile& file) {
  return {{"globalSID", file.output.resolvedGlobalSid()},
          {"inputSID", file.output.inputSid},
          {"outputSID", file.output.resolvedOutputSid()},
          {"serviceName", file.output.resolvedName()},
          {"file", file.file},
          {"streamPackets", file.streamPackets},
          {"tablePackets", file.tablePackets},
          {"seconds", orNull(file.seconds)},
          {"pidItems", pidItemsJson(file.configuration.pidItems)},
          {"pids", pidsJson(file)},
          {"warnings", file.warnings}};
}

}  // namespace

std::string extractJson(const std::string& source, uint64_t packets, uint64_t tablesSent,
                        const std::vector<SptsFile>& outputs) {
  return indentedJson({{"source", source},
                       {"packets", packets},
                       {"tablesSent", tablesSent},
                       {"outputs", jsonList(outputs, fileJson)}});
}

}  // namespace tevra::tools
