#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tevra::tools::report {

/** What became of a check. */
enum class CheckResult {
  kPassed,
  kFailed,
  kNotMeasurable,  ///< the recording does not show whether it would pass
};

/** What a check found on one PID. */
struct CheckedPid {
  int pid = 0;                  ///< 0 to 8191
  uint64_t count = 0;           ///< times that it failed; not 0
  std::optional<double> worst;  ///< seconds; nothing where nothing is timed
};

/** A check of ETSI TR 101 290 (V1.4.1) and what came of it. */
struct StreamCheck {
  int priority = 0;                           ///< 1 or 2
  std::string clause;                         ///< "5.2.1"
  std::string number;                         ///< "1.3.a"
  std::string name;                           ///< "PAT_error_2"
  std::string limit;                          ///< for people: "0.5 s"
  CheckResult result = CheckResult::kPassed;  ///< what became of it
  uint64_t count = 0;                         ///< times that it failed
  std::optional<double> worst;                ///< of all PIDs, passed or not; seconds
  std::vector<CheckedPid> pids;  ///< those that failed, ascending; none of the first two
  std::string reason;            ///< why it is not measurable; else empty
};

/** How far apart something comes, by the stream's own clock. */
struct IntervalFact {
  std::string what;             ///< "PAT", "PMT", "SDT" or "PCR"
  int pid = 0;                  ///< 0 to 8191
  std::vector<int> serviceIds;  ///< of a PMT or a PCR, and of all of an output; ascending
  uint64_t count = 0;           ///< intervals; not 0
  double shortest = 0;          ///< seconds, like the next two
  double mean = 0;              ///< of all intervals
  double longest = 0;           ///< of all intervals
};

/** Whether a check of the first priority failed. */
[[nodiscard]] bool firstPriorityFailed(const std::vector<StreamCheck>& checks);

}  // namespace tevra::tools::report
