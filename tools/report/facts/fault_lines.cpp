#include "tools/report/facts/fault_lines.h"

#include "tools/text/words.h"

namespace tevra::tools::report {

std::vector<std::string> faultLines(const Report& report) {
  PidCount sum;
  size_t discontinuousPids = 0;
  size_t scrambledPids = 0;
  for (const auto& [pid, count] : report.pids) {
    sum.continuityErrors += count.continuityErrors;
    sum.scrambled += count.scrambled;
    sum.transportErrors += count.transportErrors;
    discontinuousPids += count.continuityErrors != 0 ? 1 : 0;
    scrambledPids += count.scrambled != 0 ? 1 : 0;
  }
  std::vector<std::string> lines;
  if (sum.continuityErrors != 0) {
    lines.push_back(counted(sum.continuityErrors, "continuity error") + " on " +
                    counted(discontinuousPids, "PID"));
  }
  if (sum.transportErrors != 0) {
    lines.push_back(counted(sum.transportErrors, "packet") + " flagged as damaged");
  }
  if (sum.scrambled != 0) {
    lines.push_back(counted(sum.scrambled, "scrambled packet") + " on " +
                    counted(scrambledPids, "PID"));
  }
  lines.insert(lines.end(), report.faults.begin(), report.faults.end());
  return lines;
}

}  // namespace tevra::tools::report
