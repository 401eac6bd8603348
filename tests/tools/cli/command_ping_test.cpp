#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::Result;

using PingCommand = test::WithFakeDaemon;

TEST_F(PingCommand, CallsAsOftenAsTold) {
  const Result result = runWithDaemon({"ping", "--count", "3"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(server_.daemon().calls, testing::ElementsAre("getSIData", "getSIData", "getSIData"));
  EXPECT_THAT(result.out,
              testing::MatchesRegex("3 calls of getSIData: min [0-9]+[.][0-9]{3} ms, median "
                                    "[0-9]+[.][0-9]{3} ms, max [0-9]+[.][0-9]{3} ms\n"));
}

TEST_F(PingCommand, PrintsItsFiguresAsJson) {
  const Result result = runWithDaemon({"ping", "--json"});
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(10, json.at("calls"));
  EXPECT_GT(json.at("minMs"), 0.0);
  EXPECT_LE(json.at("minMs"), json.at("medianMs"));
  EXPECT_LE(json.at("medianMs"), json.at("maxMs"));
}

}  // namespace
}  // namespace tevra::tools
