#include <map>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::Result;
using test::run;
using testing::HasSubstr;

using OutputCommand = test::WithFakeDaemon;
using Answer = std::map<int32_t, SPTSConfiguration>;

/** The same answer for each of these global service ids. */
Answer answerFor(const std::vector<int32_t>& globalSids) {
  Answer answer;
  for (const int32_t globalSid : globalSids) {
    answer[globalSid] = test::sampleAnswer().at(1201);
  }
  return answer;
}

/** Every output of a service below 900. */
Answer answerEach(const SrvOutputRequest& request) {
  Answer answer;
  for (const auto& output : request.outputs) {
    if (request.inputSID < 900) {
      answer[output.first] = test::sampleAnswer().at(1201);
    }
  }
  return answer;
}

TEST_F(OutputCommand, AsksWithEveryOption) {
  server_.daemon().answer = answerFor({7});
  const Result result = runWithDaemon(
      {"output", "--service=101", "--output-sid=1201", "--name=Uno HD", "--transport-stream-id=5",
       "--original-network-id=6", "--next-node=-1", "--global-sid=7", "--unique-sid=8",
       "--output-param=9", "--audio=eng,spa", "--audio=fre", "--last-node=direct"});
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
  for (const char* code :
       {"eng", "ENG", "Eng", "spa", "SPA", "Spa", "fre", "FRE", "Fre", "fra", "FRA", "Fra"}) {
    node.audioLanguages.emplace_back().language = code;
  }
  expected.lastNodeSettings[7] = {node};
  EXPECT_EQ(expected, server_.daemon().requests[0]);
}

TEST_F(OutputCommand, WarnsOfALanguageThatTheAnswerDoesNotHave) {
  server_.daemon().answer = answerFor({101});
  EXPECT_EQ("", runWithDaemon({"output", "--service", "101", "--audio", "ENG"}).err);
  const Result result = runWithDaemon({"output", "--service", "101", "--audio", "eng,fra"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ(
      "tornelctl: global service id 101: there is no audio in fra/fre: the output's is in eng\n",
      result.err);
}

TEST_F(OutputCommand, AsksForListedNodesOrNone) {
  server_.daemon().answer = answerFor({101});
  EXPECT_EQ(kExitDone, runWithDaemon({"output", "--service", "101", "--last-node", "listed",
                                      "--listed-node", "5:6:eng", "--listed-node", "7"})
                           .status);
  EXPECT_EQ(kExitDone, runWithDaemon({"output", "--service", "101", "--last-node", "none"}).status);
  const auto& requests = server_.daemon().requests;
  EXPECT_EQ(2U, requests.at(0).lastNodeSettings.at(101).size());
  EXPECT_TRUE(requests.at(1).lastNodeSettings.empty());
}

TEST_F(OutputCommand, FailsForAServiceThatTheDaemonDoesNotHave) {
  const Result result = runWithDaemon({"output", "--service", "101"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("the daemon has no PMT of service 101"));
  const Result inJson = runWithDaemon({"output", "--service", "101", "--json"});
  EXPECT_EQ(kExitFailed, inJson.status);
  EXPECT_EQ("{}\n", inJson.out);
}

TEST_F(OutputCommand, AsksForSeveralOutputsOfAServiceInOneCall) {
  server_.daemon().answerTo = answerEach;
  const Result result =
      runWithDaemon({"output", "--service", "101", "--audio", "eng", "--out",
                     "gsid=1,sid=1201,name=Uno\\, HD", "--out", "gsid=2,name=Due,audio=none"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  ASSERT_EQ(1U, server_.daemon().requests.size());
  const SrvOutputRequest& request = server_.daemon().requests[0];
  EXPECT_EQ(101, request.inputSID);
  ASSERT_EQ(2U, request.outputs.size());
  EXPECT_EQ(1201, request.outputs.at(1).outputSID);
  EXPECT_EQ("Uno, HD", request.outputs.at(1).serviceName);
  EXPECT_EQ(101, request.outputs.at(2).outputSID);
  EXPECT_EQ("Due", request.outputs.at(2).serviceName);
  EXPECT_EQ("eng", request.lastNodeSettings.at(1).at(0).audioLanguages.at(0).language);
  EXPECT_EQ(1, request.lastNodeSettings.at(2).at(0).audioFilter);
  EXPECT_TRUE(request.lastNodeSettings.at(2).at(0).audioLanguages.empty());
  EXPECT_THAT(result.out, HasSubstr("output with global service id 1,"));
  EXPECT_THAT(result.out, HasSubstr("output with global service id 2,"));
}

TEST_F(OutputCommand, AsksForOutputsOfSeveralServicesOverOneConnection) {
  server_.daemon().answerTo = answerEach;
  const Result result = runWithDaemon({"output", "--json", "--out", "service=101", "--out",
                                       "service=102", "--out", "service=101,gsid=3"});
  EXPECT_EQ(kExitDone, result.status) << result.err;
  EXPECT_EQ(2U, server_.daemon().requests.size());
  const json answer = json::parse(result.out);
  EXPECT_EQ(3U, answer.size());
  EXPECT_TRUE(answer.contains("101") && answer.contains("102") && answer.contains("3"));
}

TEST_F(OutputCommand, PrintsTheOutputsThatThereAreAndNamesTheOthers) {
  server_.daemon().answerTo = answerEach;
  const std::vector<std::string> arguments = {"output",      "--out", "service=999,gsid=9", "--out",
                                              "service=101", "--out", "service=999,gsid=8", "--out",
                                              "service=998"};
  const std::string error =
      "tornelctl: the daemon has no PMT of service 998 (global service id 998), service 999 "
      "(global service id 9, 8): feed it a stream that holds the service first\n";
  const Result text = runWithDaemon(arguments);
  EXPECT_EQ(kExitFailed, text.status);
  EXPECT_EQ(error, text.err);
  EXPECT_THAT(text.out, HasSubstr("output with global service id 101,"));
  std::vector<std::string> more = arguments;
  more.emplace_back("--json");
  const Result inJson = runWithDaemon(more);
  EXPECT_EQ(kExitFailed, inJson.status);
  EXPECT_EQ(error, inJson.err);
  EXPECT_EQ(1U, json::parse(inJson.out).size());
}

TEST_F(OutputCommand, MakesTheOutputsOfAFileWithoutADaemon) {
  const std::vector<std::string> arguments = {"output", "--from", test::sample(),
                                              "--json", "--out",  "service=101"};
  const Result result = run(arguments);
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("", result.err);
  EXPECT_FALSE(json::parse(result.out).at("101").at("pidItems").empty());
  EXPECT_TRUE(server_.daemon().calls.empty());
}

TEST_F(OutputCommand, CompletesOutputsOfAFileAsExtractDoes) {
  const Result result = run({"output", "--from", test::sample(), "--audio", "zzz"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.out, HasSubstr("programme 101 "));
  EXPECT_THAT(result.err, HasSubstr("there is no audio in zzz"));
}

TEST_F(OutputCommand, NamesTheServicesOfAFileInPlaceOfOneThatItLacks) {
  const Result result = run({"output", "--from", test::sample(), "--service", "999"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_THAT(result.err,
              HasSubstr("service 999 has no PMT in this stream; services that have: 101"));
}

TEST_F(OutputCommand, FeedsTheDaemonFirstWhereItIsAskedAboutAFile) {
  server_.daemon().answerTo = answerEach;
  const Result result = runWithDaemon({"output", "--from", test::sample(), "--service", "101"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ(replacing(test::sample()), result.err);
  EXPECT_EQ("setPAT PAT 1101 v3", server_.daemon().calls.at(0));
  EXPECT_EQ(1U, server_.daemon().requests.size());
}

TEST_F(OutputCommand, AsksNoDaemonAboutAFileWithoutAName) {
  const Result result = runWithDaemon({"output", "--from", "", "--service", "101"});
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_THAT(result.err, HasSubstr("--from: a file is missing"));
  EXPECT_TRUE(server_.daemon().calls.empty());
}

TEST_F(OutputCommand, KeepsNoStateForWhatTheDaemonIsAsked) {
  const Result result = run({"output", "--service", "101", "--state", testing::TempDir()});
  EXPECT_EQ(kExitUsage, result.status);
  EXPECT_THAT(result.err, HasSubstr("--state is for --from: the daemon keeps its own"));
}

}  // namespace
}  // namespace tevra::tools
