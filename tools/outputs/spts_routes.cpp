#include "tools/outputs/spts_routes.h"

#include <map>

#include "tools/outputs/pid_attributes.h"
#include "tools/stream/ts_packet.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

std::string describe(const PIDItem& item) {
  return "output PID " + std::to_string(item.outputPid) + " (" +
         joined(pidAttributeNames(item.attributes), ", ") + ")";
}

}  // namespace

SptsRoutes::SptsRoutes(const std::vector<PIDItem>& items, int pmtPid)
    : routes_(kPidCount), pcrPid_(kNullPid) {
  for (const PIDItem& item : items) {
    add(item, pmtPid);
  }
  std::map<int, int> users;
  for (const auto& route : routes_) {
    if (route) {
      ++users[route->outputPid];
    }
  }
  for (auto& route : routes_) {
    if (route) {
      route->renumbers = users[route->outputPid] > 1;
    }
  }
}

void SptsRoutes::add(const PIDItem& item, int pmtPid) {
  if (item.inputPid == kNullPid) {
    return;  // the PCR PID of a programme without a clock
  }
  if ((item.attributes & kPidPmt) != 0) {
    addPmt(item);
    return;
  }
  if (item.inputPid == kUnknownPid) {
    warnings_.push_back(describe(item) + " is left out: the daemon does not know its input PID");
  } else if (item.inputPid < 0 || item.inputPid >= kPidCount || item.inputPid == kPatPid ||
             item.inputPid == kSdtPid) {
    warnings_.push_back(describe(item) + " is left out: input PID " +
                        std::to_string(item.inputPid) + " can carry no stream");
  } else if (item.outputPid <= kPatPid || item.outputPid >= kNullPid || item.outputPid == kSdtPid ||
             item.outputPid == pmtPid) {
    const bool isPid = item.outputPid >= 0 && item.outputPid < kNullPid;
    warnings_.push_back(describe(item) + " is left out: " +
                        (isPid ? "a table has its PID" : "streams have PIDs up to 8190"));
  } else {
    route(item.inputPid, {item.outputPid, false, false});
    if ((item.attributes & kPidPcr) != 0) {
      pcrPid_ = item.inputPid;
    }
  }
}

void SptsRoutes::addPmt(const PIDItem& item) {
  const bool isKnown = item.inputPid >= 0 && item.inputPid < kPidCount;
  if (isKnown && (item.attributes & kPidPcr) != 0) {
    route(item.inputPid, {item.outputPid, true, false});
    pcrPid_ = item.inputPid;
  }
  if ((item.attributes & ~(kPidPmt | kPidPcr)) != 0) {
    warnings_.push_back(describe(item) + " carries the PMT alone: the input has them on one PID");
  }
}

void SptsRoutes::route(int inputPid, const PidRoute& route) {
  auto& place = routes_[static_cast<size_t>(inputPid)];
  if (place) {
    warnings_.push_back("input PID " + std::to_string(inputPid) + " is listed twice, it goes to " +
                        std::to_string(place->outputPid) + " alone");
    return;
  }
  place = route;
}

}  // namespace tevra::tools
