#include "tools/status/set_status.h"

namespace tevra::tools {
namespace {

std::string problemOf(const KeptFile& file, const std::string& root) {
  const std::string path = root + "/" + file.name;
  if (file.state == FileState::kUnreadable) {
    return path + " cannot be read (" + file.reason + ")" +
           (file.isForbidden ? ": run this as root or as its owner" : "");
  }
  if (file.state == FileState::kDamaged) {
    return path + " is damaged (" + file.reason +
           "): restore it from the back-up, or have the daemon save it anew before it ends";
  }
  return "";
}

std::string problemOf(const KeptPids& pids, int set) {
  if (!pids.pool || pids.highest <= pids.pool->last) {
    return "";
  }
  return "the PID pool is exhausted, PID " + std::to_string(pids.highest) + " is beyond " +
         std::to_string(pids.pool->last) + ": stop the daemon, delete PIDRemap" +
         std::to_string(set) + ", start it";
}

}  // namespace

std::string stateOf(const DaemonStatus& daemon) {
  if (daemon.answerSeconds) {
    return "answers";
  }
  if (!daemon.listens) {
    return "unreachable";
  }
  return *daemon.listens ? "silent" : "absent";
}

std::string stateOf(const KeptFile& file) {
  switch (file.state) {
    case FileState::kRead:
      return "read";
    case FileState::kAbsent:
      return "absent";
    case FileState::kUnreadable:
      return "unreadable";
    default:
      return "damaged";
  }
}

std::vector<std::string> problemsOf(const SetStatus& status) {
  std::vector<std::string> problems;
  const auto note = [&problems](const std::string& problem) {
    if (!problem.empty()) {
      problems.push_back(problem);
    }
  };
  note(status.daemon.problem);
  if (status.mainTaskListens == false) {
    note("nothing listens at " + status.mainTaskAddress +
         ": start MainTask, which is told of no table until then");
  }
  for (const KeptFile& file : status.kept.files) {
    note(problemOf(file, status.root));
  }
  if (status.kept.pids) {
    note(problemOf(*status.kept.pids, status.set));
  }
  return problems;
}

}  // namespace tevra::tools
