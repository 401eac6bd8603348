#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/tools/support/run_tornelctl.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

TEST(RequestOptions, SayWhatIsWrongWithTheOutputs) {
  const std::vector<std::pair<std::vector<std::string>, std::string>> wrong = {
      {{}, "no service is named: give --service ID or --out service=ID"},
      {{"--out", "gsid=1"}, "--out 'gsid=1' names no input service: add the key service"},
      {{"--service", "1", "--out", "gsid=1", "--out", "gsid=2,sid=x"},
       "--out 'gsid=2,sid=x': sid needs a whole number, not 'x'"},
      {{"--service", "1", "--out", "gsid=2", "--out", "gsid=2,name=B"},
       "--out 'gsid=2,name=B': global service id 2 is taken by --out 'gsid=2': give each output "
       "its own with gsid=N"},
      {{"--service", "1", "--last-node", "none", "--out", "audio=eng"},
       "--out 'audio=eng': audio needs last-node settings to stand in, last-node none sends none"},
      {{"--service", "1", "--last-node", "some"},
       "--last-node: 'some' is none of direct, listed, none; see tornelctl output --help"},
  };
  for (const auto& [arguments, error] : wrong) {
    std::vector<std::string> all = {"output"};
    all.insert(all.end(), arguments.begin(), arguments.end());
    const test::Result result = test::run(all);
    EXPECT_EQ(kExitUsage, result.status) << error;
    EXPECT_EQ("tornelctl: " + error + "\n", result.err);
  }
}

}  // namespace
}  // namespace tevra::tools
