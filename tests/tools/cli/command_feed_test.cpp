#include "tools/cli/cli.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/udp_sender.h"

namespace tevra::tools {
namespace {

using test::Result;
using test::run;
using testing::AllOf;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

using CliTest = test::WithFakeDaemon;

TEST(Cli, PrintsHelpAndVersion) {
  const Result help = run({"--help"});
  EXPECT_EQ(kExitDone, help.status);
  EXPECT_THAT(help.out, AllOf(HasSubstr("feed"), HasSubstr("output"), HasSubstr("extract"),
                              HasSubstr("tables"), HasSubstr("listen")));
  const Result version = run({"--version"});
  EXPECT_EQ(kExitDone, version.status);
  EXPECT_THAT(version.out, testing::MatchesRegex("tornelctl [0-9.]+\n"));
  for (const char* command : {"feed", "output", "extract", "tables", "listen"}) {
    EXPECT_EQ(kExitDone, run({command, "--help"}).status) << command;
  }
  EXPECT_THAT(run({"output", "--help"}).out, HasSubstr("fre and ger, not fra and deu"));
}

TEST(Cli, HelpExplainsTheProgramOrACommand) {
  EXPECT_EQ(run({"--help"}).out, run({"help"}).out);
  for (const char* command :
       {"feed", "output", "extract", "tables", "report", "listen", "reset", "ping", "help"}) {
    const Result help = run({"help", command});
    EXPECT_EQ(kExitDone, help.status) << command;
    EXPECT_THAT(help.out, HasSubstr(command));
    EXPECT_EQ(run({command, "--help"}).out, help.out) << command;
  }
}

TEST(Cli, EndsWithStatus2ForWrongUsage) {
  const std::vector<std::vector<std::string>> wrong = {
      {},
      {"fed"},
      {"feed"},
      {"feed", "a.ts", "b.ts"},
      {"feed", "a.ts", "--set", "4"},
      {"feed", "a.ts", "--port", "0"},
      {"feed", "a.ts", "--timeout", "x"},
      {"output"},
      {"output", "--service", "65536"},
      {"output", "--service", "1", "--audio", "english"},
      {"output", "--service", "1", "--last-node", "some"},
      {"output", "--service", "1", "--last-node", "listed"},
      {"output", "--service", "1", "--listed-node", "5"},
      {"output", "--service", "1", "--last-node", "none", "--audio", "eng"},
      {"extract", "a.ts", "--service", "1"},
      {"extract", "a.ts", "--service", "x", "-o", "x.ts"},
      {"extract", "-", "--service", "1", "-o", "x.ts"},
      {"extract", test::sample(), "--service", "1", "-o", test::sample()},
      {"listen", "--timeout", "0"},
      {"listen", "--count", "0"},
      {"listen", "--color", "red"},
      {"help", "fed"},
      {"ping", "--count", "0"},
      {"feed", "-", "--loop"},
      {"feed", "udp://127.0.0.1:5000", "--loop"},
      {"feed", "a.ts", "--rate", "fast"},
      {"reset", "all"},
  };
  for (const auto& arguments : wrong) {
    const Result result = run(arguments);
    EXPECT_EQ(kExitUsage, result.status) << testing::PrintToString(arguments);
    EXPECT_THAT(result.out, IsEmpty()) << testing::PrintToString(arguments);
    EXPECT_THAT(result.err, StartsWith("tornelctl: ")) << testing::PrintToString(arguments);
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
  }
}

TEST(Cli, StaysOnOneLineWhateverTheArgumentsHold) {
  EXPECT_EQ("tornelctl: there is no command or option 'a b'; see tornelctl --help\n",
            run({"a\nb"}).err);
  EXPECT_EQ("tornelctl: a command is missing; see tornelctl --help\n", run({}).err);
  const Result failed = run({"tables", "/no/such\nfile"});
  EXPECT_EQ(kExitFailed, failed.status);
  EXPECT_EQ("tornelctl: cannot open /no/such file: No such file or directory\n", failed.err);
}

TEST_F(CliTest, FeedSendsTheTablesAndSumsUp) {
  const Result result = runWithDaemon({"feed", test::sample()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ(24U, server_.daemon().calls.size());
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("10013 packets, 24 tables sent, 0 discontinuities, 0 CRC errors\n"),
                    HasSubstr("PMT                    service 102"), HasSubstr("Radio Cuatro")));
  EXPECT_EQ("", result.err);
}

TEST_F(CliTest, PingCallsAsOftenAsTold) {
  const Result result = runWithDaemon({"ping", "--count", "3"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(server_.daemon().calls, testing::ElementsAre("getSIData", "getSIData", "getSIData"));
  EXPECT_THAT(result.out,
              testing::MatchesRegex("3 calls of getSIData: min [0-9.]+ ms, median [0-9.]+ ms, max "
                                    "[0-9.]+ ms\n"));
}

TEST_F(CliTest, PingPrintsItsFiguresAsJson) {
  const Result result = runWithDaemon({"ping", "--json"});
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(10, json.at("calls"));
  EXPECT_GT(json.at("minMs"), 0.0);
  EXPECT_LE(json.at("minMs"), json.at("medianMs"));
  EXPECT_LE(json.at("medianMs"), json.at("maxMs"));
}

TEST_F(CliTest, ResetSendsTheResetCommand) {
  const Result result = runWithDaemon({"reset"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(server_.daemon().calls, testing::ElementsAre("sendCmd 0"));
  EXPECT_THAT(result.out, HasSubstr("forgotten"));
}

TEST_F(CliTest, FeedPrintsJson) {
  const Result result = runWithDaemon({"feed", test::sample(), "--json"});
  const auto json = nlohmann::json::parse(result.out);
  EXPECT_EQ(test::sample(), json.at("source"));
  EXPECT_EQ(10013, json.at("packets"));
  EXPECT_EQ(24, json.at("tablesSent"));
  EXPECT_EQ(0, json.at("crcErrors"));
  EXPECT_EQ("PAT", json.at("tables").at(0).at("table"));
  EXPECT_EQ(1, json.at("tables").at(0).at("sections"));
  EXPECT_EQ(101, json.at("services").at(0).at("serviceId"));
  EXPECT_EQ("Canal Uno", json.at("services").at(0).at("name"));
}

TEST_F(CliTest, FeedInALoopEndsAfterTheTimeAskedFor) {
  const Result result = runWithDaemon({"feed", test::sample(), "--loop", "--seconds", "1"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_GT(server_.daemon().calls.size(), 24U) << "every round has its TOTs";
}

TEST_F(CliTest, FeedAtTheStreamsRateIsHeldBack) {
  // The sample lasts for seconds; within one only its beginning can have been sent.
  const Result result =
      runWithDaemon({"feed", test::sample(), "--rate", "realtime", "--seconds", "1", "--json"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_LT(nlohmann::json::parse(result.out).at("packets"), 10013);
}

TEST_F(CliTest, FeedTakesALiveStream) {
  constexpr const char* kSource = "udp://127.0.0.1:21044";
  std::atomic<bool> done{false};
  std::thread sender([&] { test::sendRepeatedly(test::sample(), 21044, done); });
  const Result result = runWithDaemon({"feed", kSource, "--seconds", "2"});
  done = true;
  sender.join();
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Canal Uno"));
}

TEST_F(CliTest, FeedSaysSoWhenNothingArrives) {
  const Result result = runWithDaemon({"feed", "udp://127.0.0.1:21045", "--timeout", "1"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ(
      "tornelctl: no packet came from udp://127.0.0.1:21045 in 1 s: is the stream sent there, and "
      "does a firewall let it in?\n",
      result.err);
}

TEST_F(CliTest, FeedSaysSoWhenItIsStoppedBeforeAnythingArrives) {
  const Result result = runWithDaemon({"feed", "udp://127.0.0.1:21045", "--seconds", "1"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, StartsWith("tornelctl: no packet came from udp://127.0.0.1:21045 in 1 s: "
                                     "is the stream sent there"));
}

TEST_F(CliTest, ResetPrintsJson) {
  const Result result = runWithDaemon({"reset", "--json"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ((nlohmann::json{{"reset", true}, {"host", "127.0.0.1"}, {"port", server_.port()}}),
            nlohmann::json::parse(result.out));
}

TEST_F(CliTest, FeedFailsWhenTheDaemonRefusesATable) {
  server_.daemon().takesNit = false;
  const Result result = runWithDaemon({"feed", test::sample()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("1 table refused by the daemon"));
}

TEST_F(CliTest, FeedFailsWithOneLineForAFileThatIsNone) {
  const Result result = runWithDaemon({"feed", "/no/such/file.ts"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: cannot open /no/such/file.ts: No such file or directory\n", result.err);
}

TEST_F(CliTest, ListenFailsWhenThePortIsTaken) {
  const Result result = runWithDaemon({"listen"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("cannot listen on 127.0.0.1:"));
}

}  // namespace
}  // namespace tevra::tools
