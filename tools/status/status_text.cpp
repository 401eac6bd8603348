#include <sstream>

#include "tools/status/status_output.h"
#include "tools/text/decimals.h"
#include "tools/text/dvb_time.h"
#include "tools/text/text_table.h"
#include "tools/text/time_stamp.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using TimePoint = std::chrono::system_clock::time_point;

std::string daemonText(const DaemonStatus& daemon) {
  if (daemon.answerSeconds) {
    return "answers at " + daemon.address + " in " + fixedText(*daemon.answerSeconds * 1000, 3) +
           " ms";
  }
  return stateOf(daemon) + " at " + daemon.address;
}

std::string mainTaskText(const SetStatus& status) {
  if (!status.mainTaskListens) {
    return "unknown whether it listens at " + status.mainTaskAddress;
  }
  return (*status.mainTaskListens ? "listens at " : "absent at ") + status.mainTaskAddress;
}

std::string pidsText(const KeptPids& pids) {
  const std::string of = pids.pool ? " of " + std::to_string(sizeOf(*pids.pool)) + " used, " +
                                         std::to_string(pids.pool->first + 1) + " to " +
                                         std::to_string(pids.pool->last)
                                   : " used, of a pool that is not known: give the module's --type";
  return std::to_string(pids.used) + of + "; slot " + std::to_string(pids.slot) +
         ", transport stream " + std::to_string(pids.transportStreamId);
}

std::string savedText(const KeptFile& file, TimePoint now) {
  constexpr size_t kUpToSeconds = 19;
  std::string text;
  if (file.saved) {
    const auto age = std::chrono::duration_cast<std::chrono::seconds>(now - *file.saved).count();
    text = timeStamp(*file.saved, Zone::kLocal).substr(0, kUpToSeconds) +
           (age < 0 ? ", in the future" : ", " + spanText(age).substr(1) + " ago");
  }
  if (file.state == FileState::kRead) {
    return text;
  }
  return text + (text.empty() ? "" : ", ") +
         (file.state == FileState::kAbsent ? "not saved yet"
                                           : stateOf(file) + " (" + oneLine(file.reason) + ")");
}

void printFiles(std::ostream& out, const SetStatus& status, TimePoint now, size_t width) {
  if (status.kept.files.empty()) {
    return;
  }
  TextTable table({"below " + status.root, "saved"});
  for (const KeptFile& file : status.kept.files) {
    table.addRow({file.name, savedText(file, now)});
  }
  table.print(out, 2, width);
}

std::string eitText(const KeptVersions& eits) {
  std::vector<std::string> versions;
  for (const auto& [tableId, version] : eits.byTableId) {
    versions.push_back((tableId < 0 ? std::to_string(tableId) : hex(tableId, 2)) + ":" +
                       std::to_string(version));
  }
  return joined(versions, " ");
}

std::vector<std::string> serviceRow(int32_t id, const KeptService& service) {
  std::vector<std::string> row = {std::to_string(id)};
  if (service.tables) {
    row.push_back(std::to_string(*service.outputSid));
    for (const int32_t tableId : {0x00, 0x42, 0x02}) {
      row.push_back(std::to_string(service.tables->byTableId.at(tableId)));
    }
    row.push_back(std::to_string(service.tables->startsLeft));
  } else {
    row.insert(row.end(), 5, "-");
  }
  row.push_back(service.eits ? std::to_string(service.eits->startsLeft) : "-");
  row.push_back(service.eits ? eitText(*service.eits) : "-");
  row.push_back(oneLine(service.name));
  return row;
}

void printServices(std::ostream& out, const KeptState& kept, size_t width) {
  if (kept.services.empty()) {
    return;
  }
  TextTable table(
      {"service", "output", "PAT", "SDT", "PMT", "starts left", "EIT starts left", "EITs", "name"});
  for (const auto& [id, service] : kept.services) {
    table.addRow(serviceRow(id, service));
  }
  table.print(out, 2, width);
}

void printSet(std::ostream& out, const SetStatus& status, TimePoint now, size_t width) {
  out << "MPTS " << status.set << "\n";
  out << "  daemon    " << daemonText(status.daemon) << "\n";
  out << "  MainTask  " << mainTaskText(status) << "\n";
  if (status.kept.pids) {
    out << "  PIDs      " << pidsText(*status.kept.pids) << "\n";
  }
  printFiles(out, status, now, width);
  printServices(out, status.kept, width);
}

}  // namespace

std::string statusText(const std::vector<SetStatus>& sets, TimePoint now, size_t width) {
  std::ostringstream out;
  for (const SetStatus& status : sets) {
    printSet(out, status, now, width);
  }
  return out.str();
}

}  // namespace tevra::tools
