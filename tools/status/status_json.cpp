#include "tools/status/status_output.h"
#include "tools/text/json_text.h"
#include "tools/text/time_stamp.h"

namespace tevra::tools {
namespace {

constexpr double kMillisecondsPerSecond = 1000;

Json daemonJson(const DaemonStatus& daemon) {
  return {{"state", stateOf(daemon)},
          {"address", daemon.address},
          {"answerMs",
           daemon.answerSeconds ? Json(*daemon.answerSeconds * kMillisecondsPerSecond) : Json()}};
}

Json fileJson(const KeptFile& file) {
  Json json = {{"file", file.name},
               {"state", stateOf(file)},
               {"saved", file.saved ? Json(isoTimeStamp(*file.saved, Zone::kUtc)) : Json()}};
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
  const auto version = [](const auto& entry) -> Json {
    return {{"tableId", entry.first}, {"version", entry.second}};
  };
  return {{"startsLeft", versions->startsLeft},
          {"versions", jsonList(versions->byTableId, version)}};
}

Json serviceJson(const std::pair<const int32_t, KeptService>& entry) {
  const auto& [id, service] = entry;
  return {{"service", id},
          {"outputSID", orNull(service.outputSid)},
          {"name", service.name},
          {"tables", versionsJson(service.tables)},
          {"eits", versionsJson(service.eits)}};
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
          {"services", jsonList(status.kept.services, serviceJson)}};
}

}  // namespace

std::string statusJson(const std::vector<SetStatus>& sets) {
  return indentedJson({{"sets", jsonList(sets, setJson)}});
}

}  // namespace tevra::tools
