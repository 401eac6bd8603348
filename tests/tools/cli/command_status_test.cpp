#include <filesystem>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "records/records.h"
#include "store/record_file.h"
#include "tests/platform/scoped_environment.h"
#include "tests/platform/temporary_directory.h"
#include "tests/support/files.h"
#include "tests/support/raw_socket.h"
#include "tests/tools/support/run_tornelctl.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::Result;
using test::run;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

class StatusCommand : public test::WithFakeDaemon {
 protected:
  /** A PID map of nothing. */
  void savePidMap(int set) {
    ASSERT_EQ(kRecordFileDone,
              writeRecordToFile(root_ / ("PIDRemap" + std::to_string(set)), PIDRemap()));
  }
  static std::vector<int> setsOf(const Result& result) {
    const json status = json::parse(result.out);
    std::vector<int> sets;
    for (const json& set : status.at("sets")) {
      sets.push_back(set.at("set"));
    }
    return sets;
  }

  const tevra::test::TemporaryDirectory root_;
};

TEST_F(StatusCommand, AsksWhatChangesNothingAndConnectsToNobodyElse) {
  const tevra::test::RawListener mainTask(9256, 1);
  const Result result = runWithDaemon({"status", "--conf", root_.path()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ("", result.err);
  EXPECT_THAT(server_.daemon().calls, ElementsAre("getSIData"));
  EXPECT_THAT(result.out, AllOf(HasSubstr("  daemon    answers at 127.0.0.1:"),
                                HasSubstr("  MainTask  listens at 127.0.0.1:9256\n"),
                                HasSubstr("  below " + root_.path() + " ")));
  EXPECT_TRUE(std::filesystem::is_empty(root_.path()));
}

TEST_F(StatusCommand, FailsOnOneLineThatSaysAllThatIsWrong) {
  tevra::test::writeText(root_ / "PIDRemap3", "{");
  const Result result = run({"status", "--set", "3", "--conf", root_.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("  daemon    absent at 127.0.0.1:9227\n"),
                    HasSubstr("  MainTask  absent at 127.0.0.1:9259\n"), HasSubstr("damaged (")));
  EXPECT_THAT(result.err,
              AllOf(StartsWith("tornelctl: MPTS 3: no daemon answers at 127.0.0.1:9227"),
                    HasSubstr("; MPTS 3: nothing listens at 127.0.0.1:9259: start MainTask"),
                    HasSubstr("; MPTS 3: " + root_.path() + "/PIDRemap3 is damaged")));
  EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
}

TEST_F(StatusCommand, TellsADaemonThatIsBusyFromOneThatIsNotThere) {
  const tevra::test::RawListener busy(9225);
  const Result result =
      run({"status", "--set", "1", "--conf", root_.path(), "--timeout", "1", "--json"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("silent", json::parse(result.out).at("sets")[0].at("daemon").at("state"));
  EXPECT_THAT(result.err, HasSubstr("did not answer within 1 s: it serves one client at a time"));
}

TEST_F(StatusCommand, LooksAtTheSetsThatThereIsAnythingOf) {
  EXPECT_THAT(setsOf(run({"status", "--json", "--conf", root_.path()})), ElementsAre(0));
  savePidMap(2);
  EXPECT_THAT(setsOf(run({"status", "--json", "--conf", root_.path()})), ElementsAre(2));
  EXPECT_THAT(setsOf(run({"status", "--json", "--host", "localhost", "--conf", root_.path()})),
              ElementsAre(2));
  const tevra::test::RawListener daemon(9225);
  EXPECT_THAT(setsOf(run({"status", "--json", "--conf", root_.path(), "--timeout", "1"})),
              ElementsAre(1, 2));
}

TEST_F(StatusCommand, ReadsWhereTheEnvironmentSaysUnlessItIsTold) {
  const tevra::test::ScopedEnvironment root("TEVRA_CONF_ROOT", root_.path().c_str());
  savePidMap(0);
  EXPECT_THAT(run({"status"}).out, HasSubstr("  below " + root_.path() + " "));
  EXPECT_THAT(run({"status", "--conf", "/absent"}).out, HasSubstr("  below /absent "));
}

TEST_F(StatusCommand, FailsWithoutTheDirectoryThatItIsTold) {
  const tevra::test::RawListener mainTask(9256, 1);
  const Result result = runWithDaemon({"status", "--conf", "/no/such/dir"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: there is no directory /no/such/dir: see --conf\n", result.err);
}

TEST_F(StatusCommand, KnowsThePoolOfTheTypeThatItIsTold) {
  savePidMap(0);
  EXPECT_THAT(run({"status", "--conf", root_.path()}).out, HasSubstr(" of 199 used"));
  EXPECT_THAT(run({"status", "--conf", root_.path(), "--type", "6"}).out,
              HasSubstr(" of 399 used"));
}

TEST_F(StatusCommand, AsksTheDaemonAloneOfAnotherMachine) {
  savePidMap(0);
  const Result result = run({"status", "--host", "127.0.0.2", "--conf", root_.path()});
  EXPECT_EQ(
      "MPTS 0\n"
      "  daemon    unreachable at 127.0.0.2:9224\n"
      "  MainTask  unknown whether it listens at 127.0.0.2:9256\n",
      result.out);
  EXPECT_THAT(result.err, AllOf(StartsWith("tornelctl: MPTS 0: no daemon answers at 127.0.0.2:"),
                                Not(HasSubstr("; MPTS"))));
}

TEST_F(StatusCommand, WritesItsMetricsToAFile) {
  const std::string file = root_ / "tornel.prom";
  const Result result = runWithDaemon({"status", "--metrics", "--conf", root_.path(), "-o", file});
  EXPECT_EQ(kExitFailed, result.status) << "there is no MainTask";
  EXPECT_EQ("", result.out);
  EXPECT_THAT(tevra::test::readText(file),
              AllOf(HasSubstr("tornel_up{set=\"0\"} 1\n"), testing::EndsWith("\n# EOF\n")));
  EXPECT_THAT(run({"status", "-o", "/no/such/file"}).err,
              StartsWith("tornelctl: cannot open /no/such/file"));
}

}  // namespace
}  // namespace tevra::tools
