#include "tools/report/page/check_words.h"

#include <algorithm>
#include <cmath>

#include "tools/report/page/figures.h"
#include "tools/text/decimals.h"
#include "tools/text/standard_streams.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

constexpr size_t kMostPids = 8;

/** For programs: one word, whatever the reason. */
const char* resultWord(CheckResult result) {
  switch (result) {
    case CheckResult::kFailed:
      return "failed";
    case CheckResult::kNotMeasurable:
      return "not measurable";
    default:
      return "passed";
  }
}

bool isOfFirst(const StreamCheck& check, CheckResult result) {
  return check.priority == 1 && check.result == result;
}

/** The numbers and names of those of the first priority with this result. */
std::vector<std::string> namesOf(const std::vector<StreamCheck>& checks, CheckResult result) {
  std::vector<std::string> names;
  for (const StreamCheck& check : checks) {
    if (isOfFirst(check, result)) {
      names.push_back(check.number + " " + check.name);
    }
  }
  return names;
}

Json pidJson(const CheckedPid& pid) {
  return {{"pid", pid.pid}, {"count", pid.count}, {"worst", orNull(pid.worst)}};
}

Json checkJson(const StreamCheck& check) {
  return {{"priority", check.priority},   {"clause", check.clause},
          {"number", check.number},       {"name", check.name},
          {"limit", check.limit},         {"result", resultWord(check.result)},
          {"reason", check.reason},       {"count", check.count},
          {"worst", orNull(check.worst)}, {"pids", jsonList(check.pids, pidJson)}};
}

}  // namespace

std::string resultText(const StreamCheck& check) {
  return resultWord(check.result) + (check.reason.empty() ? "" : ": " + check.reason);
}

std::string timeText(const std::optional<double>& seconds) {
  if (!seconds) {
    return {};
  }
  return std::abs(*seconds) < 1 ? fixedText(*seconds * 1000, 1) + " ms"
                                : fixedText(*seconds, 2) + " s";
}

std::string pidsText(const std::vector<CheckedPid>& pids) {
  std::vector<std::string> texts;
  for (size_t place = 0; place < std::min(pids.size(), kMostPids); ++place) {
    texts.push_back(std::to_string(pids[place].pid));
  }
  return joined(texts, ", ") + (pids.size() > kMostPids
                                    ? " and " + std::to_string(pids.size() - kMostPids) + " more"
                                    : "");
}

std::string firstPriorityText(const std::vector<StreamCheck>& checks) {
  const std::vector<std::string> failed = namesOf(checks, CheckResult::kFailed);
  if (!failed.empty()) {
    return "failed: " + joined(failed, ", ");
  }
  const std::vector<std::string> unknown = namesOf(checks, CheckResult::kNotMeasurable);
  return unknown.empty() ? "passed" : "without a failure; not measurable: " + joined(unknown, ", ");
}

void printVerdict(const Verdict& verdict, std::ostream& out) {
  out << sourceName(verdict.file) << ": " << counted(verdict.packets, "packet") << ", "
      << (verdict.seconds ? lengthText(*verdict.seconds) : "no PCR") << "; ETSI TR 101 290\n";
  TextTable table({"no.", "check", "limit", "worst", "count", "PIDs", "result"});
  for (const StreamCheck& check : verdict.checks) {
    table.addRow({check.number, check.name, check.limit, timeText(check.worst),
                  std::to_string(check.count), pidsText(check.pids), resultText(check)});
  }
  table.print(out);
  out << "first priority " << firstPriorityText(verdict.checks) << "\n";
}

Json checksJson(const std::vector<StreamCheck>& checks) {
  return jsonList(checks, checkJson);
}

std::string verdictJson(const Verdict& verdict) {
  return indentedJson({{"file", verdict.file},
                       {"packets", verdict.packets},
                       {"seconds", orNull(verdict.seconds)},
                       {"firstPriorityFailed", firstPriorityFailed(verdict.checks)},
                       {"checks", checksJson(verdict.checks)}});
}

}  // namespace tevra::tools::report
