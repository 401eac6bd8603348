#include "tools/outputs/output_request.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

using Languages = std::vector<std::string>;

OutputOptions service(int32_t inputSid) {
  OutputOptions options;
  options.inputSid = inputSid;
  return options;
}

/** The request for one output. */
SrvOutputRequest makeRequest(const OutputOptions& options) {
  return makeRequests({options}).at(0);
}

std::vector<std::string> languagesOf(const LastNodeSettings& node) {
  std::vector<std::string> codes;
  for (const AudioLanguage& language : node.audioLanguages) {
    codes.push_back(language.language);
  }
  return codes;
}

TEST(OutputRequest, NeedsNoMoreThanTheService) {
  const SrvOutputRequest request = makeRequest(service(101));
  EXPECT_EQ(101, request.inputSID);
  ASSERT_EQ(1U, request.outputs.size());
  const OutputServiceDescription& output = request.outputs.at(101);
  EXPECT_EQ(101, output.globalSID);
  EXPECT_EQ(0, output.nextNode);
  EXPECT_EQ(101, output.outputSID);
  EXPECT_EQ("Service 101", output.serviceName);
  EXPECT_EQ(1, output.transportStreamId);
  EXPECT_EQ(1, output.originalNetworkId);
  EXPECT_EQ(0, output.outputParam);
  ASSERT_EQ(1U, request.lastNodeSettings.size());
  ASSERT_EQ(1U, request.lastNodeSettings.at(101).size());
  const LastNodeSettings& node = request.lastNodeSettings.at(101)[0];
  EXPECT_EQ(101, node.globalSID);
  EXPECT_EQ(101, node.uniqueSID);
  EXPECT_EQ(0, node.audioFilter);
  EXPECT_TRUE(node.audioLanguages.empty());
}

TEST(OutputRequest, CarriesEveryOptionToItsMember) {
  OutputOptions options = service(101);
  options.globalSid = 7;
  options.outputSid = 1201;
  options.uniqueSid = 8;
  options.name = "Uno HD";
  options.transportStreamId = 9;
  options.originalNetworkId = 10;
  options.nextNode = -2;
  options.outputParam = 11;
  options.audio = Languages{"eng", "spa"};
  options.streamLanguages = Languages{"eng", "ita"};
  const SrvOutputRequest request = makeRequest(options);
  const OutputServiceDescription& output = request.outputs.at(7);
  EXPECT_EQ(7, output.globalSID);
  EXPECT_EQ(-2, output.nextNode);
  EXPECT_EQ(1201, output.outputSID);
  EXPECT_EQ("Uno HD", output.serviceName);
  EXPECT_EQ(9, output.transportStreamId);
  EXPECT_EQ(10, output.originalNetworkId);
  EXPECT_EQ(11, output.outputParam);
  const LastNodeSettings& node = request.lastNodeSettings.at(7).at(0);
  EXPECT_EQ(7, node.globalSID);
  EXPECT_EQ(8, node.uniqueSID);
  EXPECT_EQ(1, node.audioFilter);
  EXPECT_EQ((Languages{"eng", "spa"}), languagesOf(node));
}

TEST(OutputRequest, GlobalAndUniqueIdFollowTheOutputServiceId) {
  OutputOptions options = service(101);
  options.outputSid = 1201;
  const SrvOutputRequest request = makeRequest(options);
  EXPECT_EQ(1201, request.outputs.at(1201).globalSID);
  EXPECT_EQ(1201, request.lastNodeSettings.at(1201).at(0).uniqueSID);
}

TEST(OutputRequest, FiltersAllAudioWithAnEmptyLanguageList) {
  OutputOptions options = service(101);
  options.audio = Languages{};
  const LastNodeSettings node = makeRequest(options).lastNodeSettings.at(101).at(0);
  EXPECT_EQ(1, node.audioFilter);
  EXPECT_TRUE(node.audioLanguages.empty());
}

TEST(OutputRequest, SendsNoLastNodeSettingsIfNoneAreWanted) {
  OutputOptions options = service(101);
  options.lastNode = LastNode::kNone;
  EXPECT_TRUE(makeRequest(options).lastNodeSettings.empty());
}

TEST(OutputRequest, ListsNodesWithTheirOwnLanguagesOrTheOutputs) {
  OutputOptions options = service(101);
  options.lastNode = LastNode::kListed;
  options.audio = Languages{"eng"};
  options.streamLanguages = Languages{"eng", "GER"};
  options.listedNodes = {*parseListedNode("5"), *parseListedNode("6:60:fre+ger+fra")};
  const auto nodes = makeRequest(options).lastNodeSettings.at(101);
  ASSERT_EQ(2U, nodes.size());
  EXPECT_EQ(5, nodes[0].globalSID);
  EXPECT_EQ(5, nodes[0].uniqueSID);
  EXPECT_EQ(Languages{"eng"}, languagesOf(nodes[0]));
  EXPECT_EQ(6, nodes[1].globalSID);
  EXPECT_EQ(60, nodes[1].uniqueSID);
  EXPECT_EQ((Languages{"fre", "fra", "ger", "deu", "GER"}), languagesOf(nodes[1]));
}

TEST(OutputRequest, AsksForLanguagesInTheUsualCasesWithoutAStream) {
  OutputOptions options = service(101);
  options.audio = Languages{"fra", "eng"};
  const LastNodeSettings node = makeRequest(options).lastNodeSettings.at(101).at(0);
  EXPECT_EQ((Languages{"fra", "FRA", "Fra", "fre", "FRE", "Fre", "eng", "ENG", "Eng"}),
            languagesOf(node));
}

TEST(OutputRequest, HasTheFiltersOfListedNodesCombined) {
  OutputOptions options = service(101);
  options.audio = Languages{"eng"};
  EXPECT_EQ(Languages{"eng"}, options.resolvedAudio());
  options.lastNode = LastNode::kListed;
  options.listedNodes = {*parseListedNode("5"), *parseListedNode("6:60:fre")};
  EXPECT_EQ((Languages{"eng", "fre"}), options.resolvedAudio());
  options.audio.reset();
  EXPECT_FALSE(options.resolvedAudio().has_value()) << "one node takes everything";
  options.lastNode = LastNode::kNone;
  options.listedNodes.clear();
  EXPECT_FALSE(options.resolvedAudio().has_value());
}

TEST(OutputRequest, ReadsLanguagesAsTheyAreWritten) {
  EXPECT_EQ((Languages{"fre"}), parseLanguages("fre"));
  EXPECT_EQ((Languages{"fre", "Oth", "ITA"}), parseLanguages("fre,Oth+ITA"));
  EXPECT_EQ(Languages{}, parseLanguages("none"));
  for (const char* wrong : {"", "fr", "fren", "fre,", ",fre", "fre,de", "fre, ger"}) {
    EXPECT_FALSE(parseLanguages(wrong).has_value()) << wrong;
  }
}

TEST(OutputRequest, ReadsListedNodes) {
  EXPECT_EQ(-3, parseListedNode("-3")->globalSid);
  EXPECT_EQ(4, parseListedNode("3:4")->uniqueSid);
  EXPECT_FALSE(parseListedNode("3:4")->audio.has_value());
  EXPECT_EQ(Languages{}, parseListedNode("3:4:none")->audio);
  for (const char* wrong :
       {"", ":", "x", "3:", "3:x", "3:4:", "3:4:en", "3:4:eng:5", "3 ", "99999999999"}) {
    EXPECT_FALSE(parseListedNode(wrong).has_value()) << wrong;
  }
}

TEST(OutputRequest, ReadsLastNodes) {
  EXPECT_EQ(LastNode::kDirect, parseLastNode("direct"));
  EXPECT_EQ(LastNode::kListed, parseLastNode("listed"));
  EXPECT_EQ(LastNode::kNone, parseLastNode("none"));
  for (const char* wrong : {"", "0", "Direct", "direct "}) {
    EXPECT_FALSE(parseLastNode(wrong).has_value()) << wrong;
  }
}

TEST(OutputRequest, HoldsAllOutputsOfOneService) {
  OutputOptions first = service(101);
  OutputOptions second = service(101);
  second.globalSid = 2;
  second.name = "Due";
  second.lastNode = LastNode::kNone;
  const auto requests = makeRequests({first, second});
  ASSERT_EQ(1U, requests.size());
  EXPECT_EQ(101, requests[0].inputSID);
  ASSERT_EQ(2U, requests[0].outputs.size());
  EXPECT_EQ("Service 101", requests[0].outputs.at(101).serviceName);
  EXPECT_EQ("Due", requests[0].outputs.at(2).serviceName);
  EXPECT_EQ(1U, requests[0].lastNodeSettings.count(101));
  EXPECT_EQ(0U, requests[0].lastNodeSettings.count(2));
}

TEST(OutputRequest, IsOneForEachServiceInTheOrderInWhichTheyCome) {
  OutputOptions third = service(102);
  third.globalSid = 3;
  const auto requests = makeRequests({service(102), service(101), third});
  ASSERT_EQ(2U, requests.size());
  EXPECT_EQ(102, requests[0].inputSID);
  EXPECT_EQ(2U, requests[0].outputs.size());
  EXPECT_EQ(101, requests[1].inputSID);
  EXPECT_EQ(1U, requests[1].outputs.size());
  EXPECT_TRUE(makeRequests({}).empty());
}

}  // namespace
}  // namespace tevra::tools
