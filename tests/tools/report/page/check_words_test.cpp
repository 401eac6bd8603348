#include "tools/report/page/check_words.h"

#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace tevra::tools::report {
namespace {

StreamCheck checkOf(const std::string& number, CheckResult result) {
  StreamCheck check;
  check.priority = number[0] - '0';
  check.clause = "5.2.1";
  check.number = number;
  check.name = "Some_error";
  check.limit = "0.5 s";
  check.result = result;
  return check;
}

Verdict verdictOf() {
  StreamCheck failed = checkOf("1.3.a", CheckResult::kFailed);
  failed.count = 2;
  failed.worst = 0.6;
  failed.pids = {{0, 2, 0.6}};
  StreamCheck unknown = checkOf("1.6", CheckResult::kNotMeasurable);
  unknown.reason = "no PCR";
  return {"a.ts", 10, 2.5, {failed, unknown, checkOf("2.2", CheckResult::kPassed)}};
}

TEST(CheckWords, PrintTheVerdictLast) {
  std::ostringstream out;
  printVerdict(verdictOf(), out);
  EXPECT_EQ(
      "a.ts: 10 packets, 2.50 s; ETSI TR 101 290\n"
      "no.    check       limit  worst     count  PIDs  result\n"
      "1.3.a  Some_error  0.5 s  600.0 ms  2      0     failed\n"
      "1.6    Some_error  0.5 s            0            not measurable: no PCR\n"
      "2.2    Some_error  0.5 s            0            passed\n"
      "first priority failed: 1.3.a Some_error\n",
      out.str());
}

TEST(CheckWords, CallStandardInputSoButInJson) {
  Verdict verdict = verdictOf();
  verdict.file = "-";
  std::ostringstream out;
  printVerdict(verdict, out);
  EXPECT_EQ(0U, out.str().find("standard input: 10 packets"));
  EXPECT_EQ("-", nlohmann::json::parse(verdictJson(verdict)).at("file"));
}

TEST(CheckWords, SayWhatOfTheFirstPriorityIsNotKnown) {
  Verdict verdict = verdictOf();
  verdict.checks[0].result = CheckResult::kPassed;
  EXPECT_EQ("without a failure; not measurable: 1.6 Some_error", firstPriorityText(verdict.checks));
  verdict.checks[1].result = CheckResult::kPassed;
  verdict.checks[2].result = CheckResult::kFailed;
  EXPECT_EQ("passed", firstPriorityText(verdict.checks));
}

TEST(CheckWords, WriteTheSameAsJson) {
  const auto json = nlohmann::json::parse(verdictJson(verdictOf()));
  EXPECT_EQ(true, json.at("firstPriorityFailed"));
  EXPECT_EQ(2.5, json.at("seconds"));
  EXPECT_EQ((nlohmann::json{{"priority", 1},
                            {"clause", "5.2.1"},
                            {"number", "1.3.a"},
                            {"name", "Some_error"},
                            {"limit", "0.5 s"},
                            {"result", "failed"},
                            {"reason", ""},
                            {"count", 2},
                            {"worst", 0.6},
                            {"pids", {{{"pid", 0}, {"count", 2}, {"worst", 0.6}}}}}),
            json.at("checks").at(0));
  EXPECT_EQ("not measurable", json.at("checks").at(1).at("result"));
  EXPECT_EQ("no PCR", json.at("checks").at(1).at("reason"));
}

TEST(CheckWords, WriteTimesWithTheirUnit) {
  EXPECT_EQ("", timeText(std::nullopt));
  EXPECT_EQ("-980.0 ms", timeText(-0.98));
  EXPECT_EQ("10.02 s", timeText(10.02));
}

TEST(CheckWords, ListNoMorePidsThanOneCanRead) {
  std::vector<CheckedPid> pids;
  for (int pid = 1; pid <= 10; ++pid) {
    pids.push_back({pid, 1, std::nullopt});
  }
  EXPECT_EQ("1, 2, 3, 4, 5, 6, 7, 8 and 2 more", pidsText(pids));
}

}  // namespace
}  // namespace tevra::tools::report
