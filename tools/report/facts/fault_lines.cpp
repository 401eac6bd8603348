#include <utility>
#include <variant>

#include "tools/report/facts/report_data.h"
#include "tools/report/facts/stream_traits.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Lines = std::vector<std::string>;

/** Whether the PID has sections, and not one of them is good. */
bool allWrong(const PidCount& count) {
  return count.sections != 0 && count.crcErrors == count.sections;
}

/** "PMT of service 60"; of a PID that the tables name otherwise, that name. */
std::string tableOn(int pid, const std::vector<Service>& services) {
  std::vector<int> ids;
  for (const Service& service : services) {
    if (service.pmtPid == pid) {
      ids.push_back(service.serviceId);
    }
  }
  if (!ids.empty()) {
    return std::string(ids.size() == 1 ? "PMT of service " : "PMTs of services ") +
           numbersText(ids);
  }
  const std::string name = reservedPidName(pid);
  return name.empty() ? "Tables" : name;
}

void addWrongCrcs(const Report& report, Lines& lines) {
  for (const auto& [pid, count] : report.pids) {
    if (count.crcErrors == 0) {
      continue;
    }
    std::string line = tableOn(pid, report.services);
    line.append(" on PID ").append(std::to_string(pid)).append(": ");
    if (!allWrong(count)) {
      line.append(std::to_string(count.crcErrors)).append(" of ");
    }
    line.append(counted(count.sections, "section"));
    line.append(allWrong(count) && count.sections > 1 ? ", all" : "");
    lines.push_back(line.append(" with a wrong CRC"));
  }
}

/** Why the service has no PMT; empty where that is said already. */
std::string whyNoPmt(const Service& service, const Report& report) {
  if (!service.pmtPid) {
    return "not in the PAT";
  }
  const PidCount count = report.countOf(*service.pmtPid);
  if (allWrong(count)) {
    return {};
  }
  return count.packets == 0 ? "the PMT's PID has no packets" : "none came on the PMT's PID";
}

void addServicesWithoutPmt(const Report& report, Lines& lines) {
  std::map<std::string, std::vector<int>> services;  // by the reason
  for (const Service& service : report.services) {
    const std::string reason = service.hasPmt ? "" : whyNoPmt(service, report);
    if (!reason.empty()) {
      services[reason].push_back(service.serviceId);
    }
  }
  for (const auto& [reason, ids] : services) {
    lines.push_back(counted(ids.size(), "service") + " without a PMT, " + reason + ": " +
                    numbersText(ids));
  }
}

void addSilentStreams(const Report& report, Lines& lines) {
  for (const Service& service : report.services) {
    std::vector<int> silent;
    for (const InputStream& stream : service.streams) {
      if (service.hasPmt && report.countOf(stream.pid).packets == 0) {
        silent.push_back(stream.pid);
      }
    }
    if (!silent.empty()) {
      lines.push_back("Service " + std::to_string(service.serviceId) + ": " +
                      counted(silent.size(), "declared stream") + " without a packet, PID " +
                      numbersText(silent));
    }
  }
}

/** How often in all, and on how many PIDs. */
std::pair<uint64_t, size_t> sumOf(const Report& report, uint64_t PidCount::*member) {
  std::pair<uint64_t, size_t> sum = {0, 0};
  for (const auto& entry : report.pids) {
    sum.first += entry.second.*member;
    sum.second += entry.second.*member != 0 ? 1 : 0;
  }
  return sum;
}

void addPacketFaults(const Report& report, Lines& lines) {
  const auto add = [&](uint64_t PidCount::*member, const char* noun) {
    const auto [count, pids] = sumOf(report, member);
    if (count != 0) {
      lines.push_back(counted(count, noun) + " on " + counted(pids, "PID"));
    }
  };
  add(&PidCount::continuityErrors, "continuity error");
  if (const uint64_t damaged = sumOf(report, &PidCount::transportErrors).first; damaged != 0) {
    lines.push_back(counted(damaged, "packet") + " flagged as damaged");
  }
  add(&PidCount::scrambled, "scrambled packet");
}

/** Whether another line says what the check found, for each of them. */
bool isSaidElsewhere(const StreamCheck& check) {
  return check.number == "1.1" || check.number == "1.2" || check.number == "1.4" ||
         check.number == "2.1" || check.number == "2.2";
}

void addFailedChecks(const Report& report, Lines& lines) {
  for (const StreamCheck& check : report.checks) {
    if (check.result == CheckResult::kFailed && !isSaidElsewhere(check)) {
      lines.push_back(check.name + " (ETSI TR 101 290, " + check.number +
                      "): " + counted(check.count, "time") +
                      (check.pids.empty() ? "" : " on " + counted(check.pids.size(), "PID")));
    }
  }
}

/** A recording that goes over a switch from one input to another has PATs of both. */
void addFormerTransportStreams(const Report& report, Lines& lines) {
  std::vector<int> former;
  for (const TableFact& fact : report.tables) {
    const PAT* pat = std::get_if<PAT>(&fact.table);
    if (pat != nullptr && pat->transportStreamId != report.transportStreamId) {
      former.push_back(pat->transportStreamId);
    }
  }
  if (report.transportStreamId && !former.empty()) {
    lines.push_back("transport stream " + std::to_string(*report.transportStreamId) +
                    " came in the place of " + numbersText(former) +
                    ": services and outputs are those of the last alone");
  }
}

}  // namespace

std::vector<std::string> Report::faultLines() const {
  Lines lines;
  addFormerTransportStreams(*this, lines);
  addServicesWithoutPmt(*this, lines);
  addWrongCrcs(*this, lines);
  addSilentStreams(*this, lines);
  addPacketFaults(*this, lines);
  addFailedChecks(*this, lines);
  lines.insert(lines.end(), faults.begin(), faults.end());
  return lines;
}

}  // namespace tevra::tools::report
