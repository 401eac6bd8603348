#include "tools/status/status_output.h"
#include "tools/text/json_text.h"
#include "tools/text/time_stamp.h"

namespace tevra::tools {
namespace {

constexpr double kMillisecondsPerSecond = 1000;

Json daemonJson(const DaemonStatus& daemon) {
  Json json = {{"state", stateOf(daemon)}, {"address", daemon.address}};
  json["answerMs"] =
      daemon.answerSeconds ? Json(*daemon.answerSeconds * kMillisecondsPerSecond) : Json();
  return json;
}

Json fileJson(const KeptFile& file) {
  Json json = {{"file", file.name}, {"state", stateOf(file)}};
  json["saved"] = file.saved ? Json(isoTimeStamp(*file.saved, Zone::kUtc)) : Json();
  if (!file.reason.empty()) {
    json["reason"] = file.reason;
  }
  return json;
}

Json pidsJson(const std::optional<KeptPids>& pids) {
  if (!pids) {
    return {};
  }
  Json json = {
      {"transportStreamId", pids->transportStreamId}, {"slot", pids->slot}, {"used", pids->used}};
  if (pids->pool) {
    json["pool"] = sizeOf(*pids->pool);
    json["first"] = pids->pool->first + 1;
    json["last"] = pids->pool->last;
  }
  return json;
}

Json versionsJson(const std::optional<KeptVersions>& versions) {
  if (!versions) {
    return {};
  }
  Json list = Json::array();
  for (const auto& [tableId, version] : versions->byTableId) {
    list.push_back({{"tableId", tableId}, {"version", version}});
  }
  return {{"startsLeft", versions->startsLeft}, {"versions", list}};
}

Json servicesJson(const KeptState& kept) {
  Json list = Json::array();
  for (const auto& [id, service] : kept.services) {
    list.push_back({{"service", id},
                    {"outputSID", orNull(service.outputSid)},
                    {"name", service.name},
                    {"tables", versionsJson(service.tables)},
                    {"eits", versionsJson(service.eits)}});
  }
  return list;
}

Json setJson(const SetStatus& status) {
  return {{"set", status.set},
          {"problems", problemsOf(status)},
          {"daemon", daemonJson(status.daemon)},
          {"mainTask",
           {{"address", status.mainTaskAddress}, {"listens", orNull(status.mainTaskListens)}}},
          {"root", status.root},
          {"files", jsonList(status.kept.files, fileJson)},
          {"pids", pidsJson(status.kept.pids)},
          {"services", servicesJson(status.kept)}};
}

}  // namespace

std::string statusJson(const std::vector<SetStatus>& sets) {
  return indentedJson({{"sets", jsonList(sets, setJson)}});
}

}  // namespace tevra::tools
