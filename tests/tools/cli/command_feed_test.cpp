#include <atomic>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/udp_sender.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using test::Result;
using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

using FeedCommand = test::WithFakeDaemon;

TEST_F(FeedCommand, SendsTheTablesAndSumsUp) {
  const Result result = runWithDaemon({"feed", test::sample()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ(24U, server_.daemon().calls.size());
  EXPECT_THAT(result.out,
              AllOf(HasSubstr("10013 packets, 24 tables sent, 0 discontinuities, 0 CRC errors\n"),
                    HasSubstr("PMT                    service 102"), HasSubstr("Radio Cuatro")));
  EXPECT_EQ("", result.err);
}

TEST_F(FeedCommand, PrintsJson) {
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

TEST_F(FeedCommand, InALoopEndsAfterTheTimeAskedFor) {
  const Result result = runWithDaemon({"feed", test::sample(), "--loop", "--seconds", "1"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_GT(server_.daemon().calls.size(), 24U) << "every round has its TOTs";
}

TEST_F(FeedCommand, AtTheStreamsRateIsHeldBack) {
  // The sample lasts for seconds; within one only its beginning can have been sent.
  const Result result =
      runWithDaemon({"feed", test::sample(), "--rate", "realtime", "--seconds", "1", "--json"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_LT(nlohmann::json::parse(result.out).at("packets"), 10013);
}

TEST_F(FeedCommand, SaysWhatALiveStreamIsCalledBeforeItConnects) {
  const Result result = test::run({"feed", "rtp://localhost:5000"});  // nobody is at the port
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: 'rtp://localhost:5000' is not rtp://ADDRESS:PORT with an IPv4 address\n",
            result.err);
}

TEST_F(FeedCommand, TakesALiveStream) {
  constexpr const char* kSource = "udp://127.0.0.1:21044";
  std::atomic<bool> done{false};
  std::thread sender([&] { test::sendRepeatedly(test::sample(), 21044, done); });
  const Result result = runWithDaemon({"feed", kSource, "--seconds", "2"});
  done = true;
  sender.join();
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, HasSubstr("Canal Uno"));
}

TEST_F(FeedCommand, SaysSoWhenNothingArrives) {
  const Result result = runWithDaemon({"feed", "udp://127.0.0.1:21045", "--timeout", "1"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ(
      "tornelctl: no packet came from udp://127.0.0.1:21045 in 1 s: is the stream sent there, and "
      "does a firewall let it in?\n",
      result.err);
}

TEST_F(FeedCommand, SaysSoWhenItIsStoppedBeforeAnythingArrives) {
  const Result result = runWithDaemon({"feed", "udp://127.0.0.1:21045", "--seconds", "1"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, StartsWith("tornelctl: no packet came from udp://127.0.0.1:21045 in 1 s: "
                                     "is the stream sent there"));
}

TEST_F(FeedCommand, FailsWhenTheDaemonRefusesATable) {
  server_.daemon().takesNit = false;
  const Result result = runWithDaemon({"feed", test::sample()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("1 table refused by the daemon"));
}

TEST_F(FeedCommand, FailsWithOneLineForAFileThatIsNone) {
  const Result result = runWithDaemon({"feed", "/no/such/file.ts"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: cannot open /no/such/file.ts: No such file or directory\n", result.err);
}

}  // namespace
}  // namespace tevra::tools
