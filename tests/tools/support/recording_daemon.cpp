#include "tests/tools/support/recording_daemon.h"

#include "tests/tools/support/table_brief.h"

namespace tevra::tools::test {

void RecordingDaemon::getSrvOutputData(std::map<int32_t, SPTSConfiguration>& configurations,
                                       const SrvOutputRequest& request) {
  call("getSrvOutputData");
  requests.push_back(request);
  configurations = answerTo ? answerTo(request) : answer;
}

bool RecordingDaemon::call(const std::string& text) {
  beforeCall();
  calls.push_back(text);
  return true;
}

bool RecordingDaemon::table(const std::string& method, const SiTable& table) {
  return call(method + " " + brief(table));
}

void RecordingDaemon::eitCall(const std::string& method, const EITMap& eits) {
  std::string text = method;
  for (const auto& service : eits) {
    for (const auto& [tableId, eit] : service.second) {
      text += " " + brief(eit);
    }
  }
  eitMaps.push_back(eits);
  call(text);
}

}  // namespace tevra::tools::test
