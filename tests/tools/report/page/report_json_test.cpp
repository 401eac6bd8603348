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
                  {"table", json::parse(tableJson(tableFields(report.tables.at(0).table)))}}),
            written.at("tables").at(0));
  const json& made = written.at("services").at(0).at("output").at("tables").at(0);
  EXPECT_EQ(1, made.at("packets"));
  EXPECT_EQ("PMT", made.at("table").at("table"));
  EXPECT_EQ(1201, made.at("table").at("programNumber"));
}

}  // namespace
}  // namespace tevra::tools::report
