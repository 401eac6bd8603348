#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::Result;
using test::run;
using test::TemporaryFile;
using testing::HasSubstr;
using testing::StartsWith;

class ReportCommand : public test::WithFakeDaemon {
 protected:
  ReportCommand() {
    for (const int service : {101, 102, 103, 104}) {
      server_.daemon().answer[service] = test::sampleAnswer().at(1201);
    }
  }

  Result reportOf(const std::string& stream, std::vector<std::string> options = {}) {
    options.insert(options.begin(), {"report", stream, "-o", file_.path()});
    return run(options);
  }

  const TemporaryFile file_{"html"};
};

TEST_F(ReportCommand, WritesThePage) {
  const Result result = reportOf(test::sample(), {"--title", "Head & end"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("report " + file_.path() + ": 4 services, 24 tables\n", result.out);
  EXPECT_THAT(file_.read(), StartsWith("<!DOCTYPE html>"));
  EXPECT_THAT(file_.read(), HasSubstr("<title>Head &amp; end</title>"));
}

TEST_F(ReportCommand, ReplacesThePageAsAWhole) {
  file_.write(std::string("former"));
  std::ifstream former(file_.path());
  EXPECT_EQ(kExitDone, reportOf(test::sample()).status);
  EXPECT_EQ("former", std::string(std::istreambuf_iterator<char>(former), {}));
  EXPECT_THAT(file_.read(), StartsWith("<!DOCTYPE html>"));
}

TEST_F(ReportCommand, WritesJsonInstead) {
  EXPECT_EQ(kExitDone, reportOf(test::sample(), {"--json"}).status);
  EXPECT_EQ(10013, nlohmann::json::parse(file_.read()).at("packets"));
}

TEST_F(ReportCommand, WritesThePageButFailsWhenTheDaemonRefusesSomething) {
  server_.daemon().answer.erase(103);
  const Result result = runWithDaemon({"report", test::sample(), "-o", file_.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, StartsWith(replacing(test::sample())));
  EXPECT_THAT(result.err, HasSubstr("service 103: there is no output"));
  EXPECT_THAT(file_.read(), HasSubstr("service 103: there is no output"));
}

TEST_F(ReportCommand, LeavesNoFileWhenItFails) {
  const Result result = reportOf("/no/such/file.ts");
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: cannot open /no/such/file.ts: No such file or directory\n", result.err);
  EXPECT_FALSE(std::filesystem::exists(file_.path()));
}

TEST_F(ReportCommand, FeedsNothingWhenThePageCannotBeWritten) {
  const Result result =
      runWithDaemon({"report", test::sample(), "-o", "/no/such/folder/page.html"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("cannot write /no/such/folder/page.html"));
  EXPECT_THAT(server_.daemon().calls, testing::IsEmpty());
}

TEST(ReportCheck, PrintsTheVerdictAloneWithoutADaemon) {
  const Result result = test::run({"report", "--check", test::sample()});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_THAT(result.out, testing::StartsWith(test::sample() + ": 10013 packets, 9.41 s;"));
  EXPECT_THAT(result.out, testing::EndsWith("\nfirst priority passed\n"));
}

TEST(ReportCheck, FailsWhenACheckOfTheFirstPriorityDoes) {
  const TemporaryFile file("lost.ts");
  std::string bytes = test::contentOf(test::sample());
  bytes.erase(size_t{188} * 5000, size_t{188} * 10);
  file.write(bytes);
  const Result result = test::run({"report", "--check", "--json", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ(true, nlohmann::json::parse(result.out).at("firstPriorityFailed"));
}

}  // namespace
}  // namespace tevra::tools
