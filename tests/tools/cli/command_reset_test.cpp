#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::Result;

using ResetCommand = test::WithFakeDaemon;

TEST_F(ResetCommand, SendsTheResetCommand) {
  const Result result = runWithDaemon({"reset"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(server_.daemon().calls, testing::ElementsAre("sendCmd 0"));
  EXPECT_THAT(result.out, testing::HasSubstr("forgotten"));
}

TEST_F(ResetCommand, PrintsJson) {
  const Result result = runWithDaemon({"reset", "--json"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ((nlohmann::json{{"reset", true}, {"host", "127.0.0.1"}, {"port", server_.port()}}),
            nlohmann::json::parse(result.out));
}

}  // namespace
}  // namespace tevra::tools
