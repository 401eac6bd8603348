#include "tools/outputs/output_draft.h"

#include <gmock/gmock.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::StartsWith;

OutputDraft draftOf(std::optional<int32_t> service, const std::string& origin = "") {
  OutputDraft draft;
  draft.service = service;
  draft.origin = origin;
  return draft;
}

std::string inconsistency(const OutputDraft& draft) {
  try {
    requireConsistent({draft});
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

std::string clash(const std::vector<OutputDraft>& drafts) {
  try {
    requireDistinct(drafts);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "";
}

TEST(OutputDraft, SaysWhichSettingsDoNotGoTogether) {
  OutputDraft draft = draftOf(101);
  EXPECT_EQ("", inconsistency(draft));
  draft.output.lastNode = LastNode::kListed;
  EXPECT_THAT(inconsistency(draft), HasSubstr("--last-node listed needs a --listed-node"));
  draft.output.listedNodes = {ListedNode{5, 5, std::nullopt}};
  EXPECT_EQ("", inconsistency(draft));
  draft.output.uniqueSid = 3;
  EXPECT_THAT(inconsistency(draft), HasSubstr("--unique-sid"));
  draft.output.uniqueSid.reset();
  draft.output.globalSid = 5;
  EXPECT_THAT(inconsistency(draft), HasSubstr("own global service id"));
  draft.output.lastNode = LastNode::kDirect;
  EXPECT_THAT(inconsistency(draft), HasSubstr("--listed-node"));
  draft = draftOf(101);
  draft.output.lastNode = LastNode::kNone;
  draft.output.audio = std::vector<std::string>{"eng"};
  EXPECT_THAT(inconsistency(draft), HasSubstr("--audio"));
}

TEST(OutputDraft, OfAnArgumentIsNamedWithItsKeysInErrors) {
  OutputDraft draft = draftOf(101, "--out 'usid=3'");
  draft.output.lastNode = LastNode::kNone;
  draft.output.uniqueSid = 3;
  EXPECT_EQ("--out 'usid=3': usid goes with last-node direct only", inconsistency(draft));
}

TEST(OutputDraft, WithoutAServiceHasNoGlobalServiceIdButAGivenOne) {
  OutputDraft draft;
  EXPECT_FALSE(draft.globalSid().has_value());
  draft.output.lastNode = LastNode::kListed;
  draft.output.listedNodes = {ListedNode{0, 0, std::nullopt}};
  EXPECT_EQ("", inconsistency(draft)) << "0 is not the output's own";
  draft.output.outputSid = 7;
  EXPECT_EQ(7, draft.globalSid());
  draft.output.globalSid = 8;
  EXPECT_EQ(8, draft.globalSid());
}

TEST(OutputDraft, IsToldWithWhomItSharesItsGlobalServiceId) {
  OutputDraft second = draftOf(102, "B");
  second.output.globalSid = 101;
  EXPECT_EQ("B: global service id 101 is taken by A: give each output its own with gsid=N",
            clash({draftOf(101, "A"), second}));
  second.output.globalSid = 7;
  EXPECT_EQ("", clash({draftOf(101, "A"), second}));
  EXPECT_EQ("", clash({}));
}

TEST(OutputDraft, OfAServiceThatIsNotKnownYetSharesItsGlobalServiceId) {
  const OutputDraft first = draftOf(std::nullopt, "A");
  OutputDraft second = draftOf(std::nullopt, "B");
  EXPECT_THAT(clash({first, second}), AllOf(StartsWith("B: "), HasSubstr("same service")));
  second.output.globalSid = 1;
  EXPECT_EQ("", clash({first, second}));
}

TEST(OutputDraft, SharesNoGlobalServiceIdWithTheListedNodesOfAnother) {
  OutputDraft listed = draftOf(101, "A");
  listed.output.listedNodes = {ListedNode{5, 5, std::nullopt}, ListedNode{5, 6, std::nullopt}};
  EXPECT_EQ("", clash({listed})) << "one output may name a node twice";
  OutputDraft other = draftOf(102, "B");
  other.output.globalSid = 5;
  EXPECT_THAT(clash({listed, other}), StartsWith("B: global service id 5 is taken by A"));
  EXPECT_THAT(clash({other, listed}), StartsWith("A: global service id 5 is taken by B"));
  other.output.globalSid = 6;
  other.output.listedNodes = {ListedNode{5, 5, std::nullopt}};
  EXPECT_THAT(clash({listed, other}), StartsWith("B: global service id 5 is taken by A"));
}

TEST(OutputDraft, BecomesTheOutputOfItsService) {
  OutputDraft draft = draftOf(101);
  draft.output.name = "Uno";
  const auto outputs = outputsOf({draft, draftOf(102)});
  ASSERT_EQ(2U, outputs.size());
  EXPECT_EQ(101, outputs[0].inputSid);
  EXPECT_EQ("Uno", outputs[0].resolvedName());
  EXPECT_EQ(102, outputs[1].inputSid);
  EXPECT_EQ("Service 102", outputs[1].resolvedName());
}

}  // namespace
}  // namespace tevra::tools
