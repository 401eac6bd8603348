#include "tools/outputs/output_answers.h"

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"

namespace tevra::tools {
namespace {

using test::RecordingDaemon;
using testing::ElementsAre;
using testing::Key;
using testing::Pair;

OutputOptions outputOf(int32_t service, int32_t globalSid) {
  OutputOptions output;
  output.inputSid = service;
  output.globalSid = globalSid;
  return output;
}

/** Answers for every output, but not of service 103. */
std::map<int32_t, SPTSConfiguration> answerEach(const SrvOutputRequest& request) {
  std::map<int32_t, SPTSConfiguration> answer;
  for (const auto& output : request.outputs) {
    if (request.inputSID != 103) {
      answer[output.first].outputTables.outputParam2 = request.inputSID;
    }
  }
  return answer;
}

TEST(OutputAnswers, ComeFromOneCallForEachService) {
  RecordingDaemon daemon;
  daemon.answerTo = answerEach;
  const auto answers =
      askFor(daemon, {outputOf(101, 1), outputOf(102, 2), outputOf(101, 3), outputOf(103, 4)});
  EXPECT_EQ(3U, daemon.requests.size());
  EXPECT_THAT(answers, ElementsAre(Key(1), Key(2), Key(3)));
  EXPECT_EQ(101, answers.at(3).outputTables.outputParam2);
  EXPECT_EQ(102, answers.at(2).outputTables.outputParam2);
}

TEST(OutputAnswers, ThatAreMissingAreFoundByService) {
  const std::vector<OutputOptions> outputs = {outputOf(103, 4), outputOf(101, 1), outputOf(103, 2),
                                              outputOf(102, 9)};
  EXPECT_THAT(unanswered(outputs, {{1, {}}, {8, {}}}),
              ElementsAre(Pair(102, ElementsAre(9)), Pair(103, ElementsAre(4, 2))));
  EXPECT_TRUE(unanswered(outputs, {{1, {}}, {2, {}}, {4, {}}, {9, {}}}).empty());
}

TEST(OutputAnswers, ThatAreMissingAreNamedOnOneLine) {
  EXPECT_EQ("service 102 (global service id 9), service 103 (global service id 4, -2)",
            servicesText({{102, {9}}, {103, {4, -2}}}));
}

}  // namespace
}  // namespace tevra::tools
