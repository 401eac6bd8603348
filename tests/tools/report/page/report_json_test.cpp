#include "tools/report/page/report_json.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/tools/report/report_samples.h"
#include "tools/tables/table_json.h"

namespace tevra::tools::report {
namespace {

using nlohmann::json;

TableFact factOf(int programNumber, size_t sections) {
  TableFact fact;
  PMT pmt;
  pmt.programNumber = programNumber;
  fact.table = pmt;
  fact.pid = 256;
  fact.sections = sections;
  fact.times = 3;
  fact.arrivals = 40;
  return fact;
}

TEST(ReportJson, HoldsTheTablesAsTheTablesCommandPrintsThem) {
  Report report = test::reportOf(1, 1);
  report.tables = {factOf(101, 2)};
  report.services.at(0).output->tables = {factOf(1201, 1)};
  const json written = json::parse(reportJson(report));
  EXPECT_EQ(json({{"pid", 256},
                  {"sections", 2},
                  {"times", 3},
                  {"arrivals", 40},
                  {"table", json::parse(tableJson(tableFields(report.tables.at(0).table)))}}),
            written.at("tables").at(0));
  const json& made = written.at("services").at(0).at("output").at("tables").at(0);
  EXPECT_EQ(1, made.at("packets"));
  EXPECT_EQ("PMT", made.at("table").at("table"));
  EXPECT_EQ(1201, made.at("table").at("programNumber"));
}

TEST(ReportJson, HoldsWhatThePageSaysOfServicesKindsFaultsAndIntervals) {
  Report report = test::reportOf(1, 1);
  report.seconds = 2.0;
  report.title.clear();
  report.pids[0].continuityErrors = 1;
  report.checks.resize(1);
  report.intervals = {{"PMT", 256, {1}, 4, 0.1, 0.2, 0.3}};
  report.services[0].output->intervals = {{"PCR", 502, {1}, 4, 0.01, 0.02, 0.03}};
  const json written = json::parse(reportJson(report));
  EXPECT_EQ("some.ts", written.at("title"));
  EXPECT_EQ(json({"1 continuity error on 1 PID"}), written.at("faults"));
  EXPECT_EQ(300, written.at("services").at(0).at("packets"));
  EXPECT_EQ(225'600.0, written.at("services").at(0).at("bitRate"));
  EXPECT_EQ("video", written.at("kinds").at(0).at("kind"));
  EXPECT_EQ(200, written.at("kinds").at(0).at("packets"));
  EXPECT_EQ(1U, written.at("checks").size());
  EXPECT_EQ(json({{"what", "PMT"},
                  {"pid", 256},
                  {"serviceIds", {1}},
                  {"count", 4},
                  {"min", 0.1},
                  {"mean", 0.2},
                  {"max", 0.3}}),
            written.at("intervals").at(0));
  EXPECT_EQ(502, written.at("services").at(0).at("output").at("intervals").at(0).at("pid"));
}

}  // namespace
}  // namespace tevra::tools::report
