#include "tools/cli.h"

#include <atomic>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/fake_daemon_server.h"
#include "tests/tools/sample_answer.h"
#include "tests/tools/temporary_file.h"
#include "tests/tools/ts_builder.h"
#include "tests/tools/udp_sender.h"

namespace tevra::tools {
namespace {

using test::FakeDaemonServer;
using test::TemporaryFile;
using testing::AllOf;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

struct Result {
  int status;
  std::string out;
  std::string err;
};

Result run(const std::vector<std::string>& arguments) {
  std::vector<const char*> argv = {"tornelctl"};
  for (const std::string& argument : arguments) {
    argv.push_back(argument.c_str());
  }
  std::ostringstream out;
  std::ostringstream err;
  const int status = runTornelctl(static_cast<int>(argv.size()), argv.data(), out, err);
  return {status, out.str(), err.str()};
}

class CliTest : public testing::Test {
 protected:
  /** Runs with the fake daemon's port behind the arguments. */
  Result runWithDaemon(std::vector<std::string> arguments) {
    arguments.push_back("--port");
    arguments.push_back(std::to_string(server_.port()));
    return run(arguments);
  }

  FakeDaemonServer server_;
};

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
      {"listen", "--timeout", "1"},
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
    EXPECT_THAT(result.err, HasSubstr("tornelctl")) << testing::PrintToString(arguments);
  }
}

TEST(Cli, EndsWithStatus1AndOneLineWhenTheDaemonIsNotThere) {
  int port = 0;
  {
    FakeDaemonServer server;
    port = server.port();
  }
  const std::string portText = std::to_string(port);
  for (const auto& arguments : std::vector<std::vector<std::string>>{
           {"feed", test::sample()},
           {"output", "--service", "101"},
           {"extract", test::sample(), "--service", "101", "-o", testing::TempDir() + "x.ts"},
           {"report", test::sample(), "-o", testing::TempDir() + "x.html"},
           {"ping"},
           {"reset"}}) {
    std::vector<std::string> all = arguments;
    all.insert(all.end(), {"--port", portText});
    const Result result = run(all);
    EXPECT_EQ(kExitFailed, result.status);
    EXPECT_THAT(result.err, HasSubstr("tornelctl: no daemon answers at 127.0.0.1:" + portText));
    EXPECT_EQ(1, std::count(result.err.begin(), result.err.end(), '\n')) << result.err;
  }
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
      "tornelctl: nothing has arrived at udp://127.0.0.1:21045 for 1 s: is the stream sent "
      "there?\n",
      result.err);
}

TEST_F(CliTest, FeedFailsWhenTheDaemonRefusesATable) {
  server_.daemon().takesNit = false;
  const Result result = runWithDaemon({"feed", test::sample()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("1 table refused by the daemon"));
}

TEST_F(CliTest, ExtractWithoutAServiceNeedsAStreamWithAPmt) {
  test::PacketWriter writer;
  const TemporaryFile file("ts");
  file.write(writer.section(0x11, test::makeSdt(1, 4, 101, "One")));
  const Result result = runWithDaemon({"extract", file.path(), "-o", file.path() + ".out"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: no service of this stream has a PMT\n", result.err);
}

TEST_F(CliTest, FeedFailsWithOneLineForAFileThatIsNone) {
  const Result result = runWithDaemon({"feed", "/no/such/file.ts"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("tornelctl: cannot open /no/such/file.ts: No such file or directory\n", result.err);
}

TEST_F(CliTest, OutputAsksWithEveryOption) {
  server_.daemon().answer = test::sampleAnswer();
  const Result result = runWithDaemon({"output",  "--service",
                                       "101",     "--output-sid",
                                       "1201",    "--name",
                                       "Uno HD",  "--transport-stream-id",
                                       "5",       "--original-network-id",
                                       "6",       "--next-node",
                                       "-1",      "--global-sid",
                                       "7",       "--unique-sid",
                                       "8",       "--output-param",
                                       "9",       "--audio",
                                       "eng,spa", "--audio",
                                       "fre",     "--last-node",
                                       "direct"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, HasSubstr("programme 1201 on PID 501"));
  ASSERT_EQ(1U, server_.daemon().requests.size());
  SrvOutputRequest expected;
  expected.inputSID = 101;
  OutputServiceDescription& output = expected.outputs[7];
  output.globalSID = 7;
  output.nextNode = -1;
  output.outputSID = 1201;
  output.serviceName = "Uno HD";
  output.transportStreamId = 5;
  output.originalNetworkId = 6;
  output.outputParam = 9;
  LastNodeSettings node;
  node.globalSID = 7;
  node.uniqueSID = 8;
  node.audioFilter = 1;
  node.audioLanguages.resize(3);
  node.audioLanguages[0].language = "eng";
  node.audioLanguages[1].language = "spa";
  node.audioLanguages[2].language = "fre";
  expected.lastNodeSettings[7] = {node};
  EXPECT_EQ(expected, server_.daemon().requests[0]);
}

TEST_F(CliTest, OutputAsksForListedNodesOrNone) {
  server_.daemon().answer = test::sampleAnswer();
  EXPECT_EQ(kExitDone, runWithDaemon({"output", "--service", "101", "--last-node", "listed",
                                      "--listed-node", "5:6:eng", "--listed-node", "7"})
                           .status);
  EXPECT_EQ(kExitDone, runWithDaemon({"output", "--service", "101", "--last-node", "none"}).status);
  const auto& requests = server_.daemon().requests;
  EXPECT_EQ(2U, requests.at(0).lastNodeSettings.at(101).size());
  EXPECT_TRUE(requests.at(1).lastNodeSettings.empty());
}

TEST_F(CliTest, OutputPrintsJson) {
  server_.daemon().answer = test::sampleAnswer();
  const Result result = runWithDaemon({"output", "--service", "101", "--json"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_TRUE(nlohmann::json::parse(result.out).contains("1201"));
}

TEST_F(CliTest, OutputFailsForAServiceThatTheDaemonDoesNotHave) {
  const Result result = runWithDaemon({"output", "--service", "101"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("the daemon has no PMT of service 101"));
  const Result json = runWithDaemon({"output", "--service", "101", "--json"});
  EXPECT_EQ(kExitFailed, json.status);
  EXPECT_EQ("{}\n", json.out);
}

/** The sample's service 101 as service 1201, which sampleAnswer describes. */
std::map<int32_t, SPTSConfiguration> answerForSample() {
  auto answer = test::sampleAnswer();
  auto& items = answer.at(1201).pidItems;
  items.resize(2);
  items[0].inputPid = 0x100;
  items[1].inputPid = 0x101;
  return answer;
}

TEST_F(CliTest, ExtractWritesTheStream) {
  server_.daemon().answer = answerForSample();
  const TemporaryFile file("out");
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_THAT(result.out, AllOf(HasSubstr("24 tables sent to the daemon"), HasSubstr("Canal Uno"),
                                HasSubstr("output " + file.path() + ": 1546 packets of streams"),
                                HasSubstr("9.41 s")));
  std::map<int, int> counts;
  for (const TsPacket& packet : file.readPackets()) {
    ++counts[packet.pid()];
  }
  EXPECT_EQ(4U, counts.size());
  EXPECT_EQ(1546, counts[502]);
  EXPECT_GE(counts[0], 95);
  EXPECT_EQ(counts[0], counts[501]);
  EXPECT_GE(counts[0x11], 9);
}

TEST_F(CliTest, ExtractTakesNameAndIdsFromTheStreamUnlessTheyAreGiven) {
  server_.daemon().answer = answerForSample();
  const TemporaryFile file("out");
  const std::vector<std::string> arguments = {
      "extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()};
  EXPECT_EQ(kExitDone, runWithDaemon(arguments).status);
  std::vector<std::string> more = arguments;
  more.insert(more.end(),
              {"--name", "Uno", "--transport-stream-id", "2", "--original-network-id", "3"});
  EXPECT_EQ(kExitDone, runWithDaemon(more).status);
  const auto& requests = server_.daemon().requests;
  EXPECT_EQ("Canal Uno", requests.at(0).outputs.at(1201).serviceName);
  EXPECT_EQ(1101, requests.at(0).outputs.at(1201).transportStreamId);
  EXPECT_EQ(0xFF01, requests.at(0).outputs.at(1201).originalNetworkId);
  EXPECT_EQ("Uno", requests.at(1).outputs.at(1201).serviceName);
  EXPECT_EQ(2, requests.at(1).outputs.at(1201).transportStreamId);
  EXPECT_EQ(3, requests.at(1).outputs.at(1201).originalNetworkId);
}

TEST_F(CliTest, ExtractTakesTheFirstServiceUnlessOneIsGiven) {
  const TemporaryFile file("out");
  (void)runWithDaemon({"extract", test::sample(), "-o", file.path()});
  ASSERT_EQ(1U, server_.daemon().requests.size());
  EXPECT_EQ(101, server_.daemon().requests[0].inputSID);
  EXPECT_EQ("Canal Uno", server_.daemon().requests[0].outputs.at(101).serviceName);
}

TEST_F(CliTest, ExtractListsTheServicesWhenTheOneAskedForIsNotThere) {
  server_.daemon().answer = answerForSample();  // left from another stream
  const TemporaryFile file("out");
  const Result result =
      runWithDaemon({"extract", test::sample(), "--service", "999", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ(
      "tornelctl: service 999 has no PMT in this stream; services that have: 101 \"Canal Uno\", "
      "102 \"Télé Deux\", 103 \"Kanal Süd\", 104 \"Radio Cuatro\"\n",
      result.err);
  EXPECT_FALSE(std::filesystem::exists(file.path()));
}

TEST_F(CliTest, ExtractFailsWhenTheDaemonGivesNoOutput) {
  const TemporaryFile file("out");
  const Result result =
      runWithDaemon({"extract", test::sample(), "--service", "101", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("gives no output for service 101"));
}

TEST_F(CliTest, ExtractWarnsOfPidsThatItCannotCarryAndFailsWithoutAny) {
  server_.daemon().answer = answerForSample();
  server_.daemon().answer.at(1201).pidItems.at(1).inputPid = 65535;
  const TemporaryFile file("out");
  const Result result = runWithDaemon(
      {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, AllOf(HasSubstr("output PID 502 (PCR, ES) is left out"),
                                HasSubstr("holds tables alone")));
}

TEST_F(CliTest, ExtractFailsWhenTheOutputCannotBeWritten) {
  server_.daemon().answer = answerForSample();
  for (const std::string path : {"/no/such/folder/out.ts", "/dev/full"}) {
    const Result result = runWithDaemon(
        {"extract", test::sample(), "--service", "101", "--output-sid", "1201", "-o", path});
    EXPECT_EQ(kExitFailed, result.status) << path;
    EXPECT_THAT(result.err, HasSubstr(path));
  }
}

TEST_F(CliTest, ListenFailsWhenThePortIsTaken) {
  const Result result = runWithDaemon({"listen"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("cannot listen on 127.0.0.1:"));
}

}  // namespace
}  // namespace tevra::tools
