#pragma once

#include <optional>
#include <string>
#include <vector>

#include "records/records.h"

namespace tevra::tools {

/** What becomes of the packets of one input PID. */
struct PidRoute {
  int outputPid;   ///< 0 to 8191
  bool pcrOnly;    ///< the input's PMT shares the PID: only its PCRs go on
  bool renumbers;  ///< several input PIDs share the output PID: continuity counters are made anew
};

/** Where the packets of an input multiplex go in one output. */
class SptsRoutes {
 public:
  /** `pmtPid` is the PID of the output's PMT. */
  SptsRoutes(const std::vector<PIDItem>& items, int pmtPid);

  /** Nothing for a PID that the output does not carry. `inputPid` is 0 to 8191. */
  [[nodiscard]] const std::optional<PidRoute>& of(int inputPid) const {
    return routes_[static_cast<size_t>(inputPid)];
  }
  /** The input PID of the PCRs, kNullPid when there is none. */
  [[nodiscard]] int pcrPid() const { return pcrPid_; }
  /** One line for every item that cannot be carried. */
  [[nodiscard]] const std::vector<std::string>& warnings() const { return warnings_; }

 private:
  void add(const PIDItem& item, int pmtPid);
  void addPmt(const PIDItem& item);
  void route(int inputPid, const PidRoute& route);

  std::vector<std::optional<PidRoute>> routes_;  // by input PID
  int pcrPid_;
  std::vector<std::string> warnings_;
};

}  // namespace tevra::tools
