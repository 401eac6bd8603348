#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/report/facts/report_collector.h"
#include "tools/text/json_text.h"

namespace tevra::tools::report {

/** "passed", "failed", "not measurable: no PCR". */
[[nodiscard]] std::string resultText(const StreamCheck& check);
/** "-980.0 ms", "1.25 s"; empty without a value. */
[[nodiscard]] std::string timeText(const std::optional<double>& seconds);
/** "257, 258 and 3 more". */
[[nodiscard]] std::string pidsText(const std::vector<CheckedPid>& pids);
/** What became of the first priority: "passed", "failed: 1.4 Continuity_count_error". */
[[nodiscard]] std::string firstPriorityText(const std::vector<StreamCheck>& checks);

/** All checks as a table for people, what became of the first priority last. */
void printVerdict(const Verdict& verdict, std::ostream& out);
/** The same as one JSON object. */
[[nodiscard]] std::string verdictJson(const Verdict& verdict);
/** The checks as they stand in both. */
[[nodiscard]] Json checksJson(const std::vector<StreamCheck>& checks);

}  // namespace tevra::tools::report
