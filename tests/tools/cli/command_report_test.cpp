#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/fake_daemon_server.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::TemporaryFile;
using testing::HasSubstr;

struct Result {
  int status;
  std::string out;
  std::string err;
};

Result report(std::vector<std::string> arguments) {
  std::vector<const char*> argv = {"tornelctl", "report"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  const int status = runTornelctl(static_cast<int>(argv.size()), argv.data(), out, err);
  return {status, out.str(), err.str()};
}

class CliReport : public testing::Test {
 protected:
  CliReport() {
    for (const int service : {101, 102, 103, 104}) {
      server_.daemon().answer[service] = test::sampleAnswer().at(1201);
    }
  }

  Result reportOf(const std::string& stream, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {stream, "--port", std::to_string(server_.port())});
    options.insert(options.end(), {"-o", file_.path()});
    return report(options);
  }

  test::FakeDaemonServer server_;
  const TemporaryFile file_{"html"};
};

TEST_F(CliReport, WritesThePage) {
  const Result result = reportOf(test::sample(), {"--title", "Head & end"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("report " + file_.path() + ": 4 services, 24 tables sent to the daemon\n", result.out);
  EXPECT_THAT(file_.read(), testing::StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(file_.read(), HasSubstr("<title>Head &amp; end</title>"));
}

TEST_F(CliReport, WritesJsonInstead) {
  EXPECT_EQ(kExitDone, reportOf(test::sample(), {"--json"}).status);
  EXPECT_EQ(10013, nlohmann::json::parse(file_.read()).at("packets"));
}

TEST_F(CliReport, WritesThePageButFailsWhenTheDaemonRefusesSomething) {
  server_.daemon().answer.erase(103);
  const Result result = reportOf(test::sample());
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("service 103: the daemon gives no output"));
  EXPECT_THAT(file_.read(), HasSubstr("service 103: the daemon gives no output"));
}

TEST_F(CliReport, LeavesNoFileWhenItFails) {
  const Result result = reportOf("/no/such/file.ts");
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: cannot open /no/such/file.ts: No such file or directory\n", result.err);
  EXPECT_FALSE(std::filesystem::exists(file_.path()));
}

TEST_F(CliReport, SaysSoWhenThePageCannotBeWritten) {
  const Result result = report({test::sample(), "--port", std::to_string(server_.port()), "-o",
                                "/no/such/folder/page.html"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("cannot open /no/such/folder/page.html"));
}

TEST(CliReportUsage, EndsWithStatus2ForWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"a.ts"},
      {"-", "-o", "x.html"},
      {"a.ts", "b.ts", "-o", "x.html"},
      {test::sample(), "-o", test::sample()},
      {"a.ts", "-o", "x.html", "--timeout", "0"},
  };
  for (const auto& arguments : wrong) {
    const Result result = report(arguments);
    EXPECT_EQ(kExitUsage, result.status) << testing::PrintToString(arguments);
    EXPECT_EQ("", result.out);
  }
}

}  // namespace
}  // namespace tevra::tools
