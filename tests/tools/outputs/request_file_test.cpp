#include "tools/outputs/request_file.h"

#include <gmock/gmock.h>

#include "tests/tools/support/temporary_file.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::TemporaryFile;
using testing::StartsWith;
using Languages = std::vector<std::string>;

std::vector<OutputDraft> parse(const std::string& json, const OutputDraft& defaults = {}) {
  return parseRequest(json, "r.json", defaults);
}

/** What is said of the request, without its name. */
std::string errorOf(const std::string& json) {
  try {
    (void)parse(json);
  } catch (const UsageError& error) {
    const std::string start = "--request r.json: ";
    const std::string what = error.what();
    return what.compare(0, start.size(), start) == 0 ? what.substr(start.size()) : "?" + what;
  }
  return "";
}

TEST(RequestFile, CarriesEveryMemberToItsMember) {
  const auto drafts = parse(R"([{"service": 101, "gsid": -7, "sid": 1201, "name": "Uno, \"HD\"",
      "tsid": 5, "onid": 65535, "audio": ["eng", "spa"], "next-node": -1, "output-param": 9,
      "last-node": "direct", "usid": 8}])");
  ASSERT_EQ(1U, drafts.size());
  EXPECT_EQ(101, drafts[0].service);
  const OutputOptions& output = drafts[0].output;
  EXPECT_EQ(-7, output.globalSid);
  EXPECT_EQ(1201, output.outputSid);
  EXPECT_EQ("Uno, \"HD\"", output.name);
  EXPECT_EQ(5, output.transportStreamId);
  EXPECT_EQ(65535, output.originalNetworkId);
  EXPECT_EQ((Languages{"eng", "spa"}), output.audio);
  EXPECT_EQ(-1, output.nextNode);
  EXPECT_EQ(9, output.outputParam);
  EXPECT_EQ(LastNode::kDirect, output.lastNode);
  EXPECT_EQ(8, output.uniqueSid);
}

TEST(RequestFile, ListsNodesWithTheirLanguages) {
  const auto drafts = parse(R"([{"last-node": "listed", "listed-node": [
      {"gsid": 5, "usid": 6, "audio": []}, {"gsid": 7}, {"audio": "eng+spa", "gsid": 8}]}])");
  EXPECT_EQ(LastNode::kListed, drafts.at(0).output.lastNode);
  const auto& nodes = drafts[0].output.listedNodes;
  ASSERT_EQ(3U, nodes.size());
  EXPECT_EQ(5, nodes[0].globalSid);
  EXPECT_EQ(6, nodes[0].uniqueSid);
  EXPECT_EQ(Languages{}, nodes[0].audio);
  EXPECT_EQ(7, nodes[1].uniqueSid) << "the global one";
  EXPECT_FALSE(nodes[1].audio.has_value());
  EXPECT_EQ((Languages{"eng", "spa"}), nodes[2].audio);
}

TEST(RequestFile, TakesAudioAsInAnArgument) {
  EXPECT_EQ((Languages{"eng", "spa"}), parse(R"([{"audio": "eng+spa"}])").at(0).output.audio);
  EXPECT_EQ(Languages{}, parse(R"([{"audio": "none"}])").at(0).output.audio);
  EXPECT_EQ(Languages{}, parse(R"([{"audio": []}])").at(0).output.audio);
}

TEST(RequestFile, LeavesWhatAnOutputDoesNotSayToTheObjectAroundAndThenToTheDefaults) {
  OutputDraft defaults;
  defaults.service = 1;
  defaults.output.transportStreamId = 5;
  defaults.output.originalNetworkId = 6;
  const auto drafts = parse(R"({"outputs": [{"gsid": 1}, {"gsid": 2, "service": 102, "tsid": 7}],
      "service": 101, "onid": 8})",
                            defaults);
  ASSERT_EQ(2U, drafts.size());
  EXPECT_EQ(101, drafts[0].service);
  EXPECT_EQ(5, drafts[0].output.transportStreamId);
  EXPECT_EQ(8, drafts[0].output.originalNetworkId);
  EXPECT_EQ(102, drafts[1].service);
  EXPECT_EQ(7, drafts[1].output.transportStreamId);
  EXPECT_EQ(8, drafts[1].output.originalNetworkId);
}

TEST(RequestFile, SaysWhereEachOutputCameFrom) {
  EXPECT_EQ("--request r.json: [1]", parse("[{}, {}]").at(1).origin);
  EXPECT_EQ("--request r.json: outputs[0]", parse(R"({"outputs": [{}]})").at(0).origin);
}

TEST(RequestFile, SaysExactlyWhatIsWrongAndWhere) {
  const std::string members =
      "; the members are service, gsid, sid, name, tsid, onid, audio, next-node, output-param, "
      "last-node, usid, listed-node";
  const std::string form = "a request is an array of outputs, or an object with one as \"outputs\"";
  const std::string int32 = "-2147483648 to 2147483647";
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {"3", form},
      {"\"x\"", form},
      {"null", form},
      {"[]", "the request is empty: describe at least one output"},
      {"{}", "there is no \"outputs\", the array of outputs"},
      {R"({"outputs": []})", "outputs is empty: describe at least one output"},
      {R"({"outputs": {}})", "outputs is not an array of outputs"},
      {R"({"outputs": [{}], "foo": 1})", "foo is unknown" + members},
      {R"({"outputs": [{}], "sid": 65536})", "sid 65536 is out of range, 0 to 65535"},
      {"[{}, 1]", "[1] is not an object that describes an output"},
      {R"([{}, {"foo": 1}])", "[1].foo is unknown" + members},
      {R"({"outputs": [{"outputs": []}]})", "outputs[0].outputs is unknown" + members},
      {R"([{"gsid": 1, "gsid": 1}])", "[0].gsid is given twice"},
      {R"([{"sid": -1}])", "[0].sid -1 is out of range, 0 to 65535"},
      {R"([{"gsid": 2147483648}])", "[0].gsid 2147483648 is out of range, " + int32},
      {R"([{"gsid": 18446744073709551615}])",
       "[0].gsid 18446744073709551615 is out of range, " + int32},
      {R"([{"gsid": 99999999999999999999}])",
       "[0].gsid needs a whole number, " + int32 + ", not 1e+20"},
      {R"([{"sid": 1.5}])", "[0].sid needs a whole number, 0 to 65535, not 1.5"},
      {R"([{"sid": "1"}])", "[0].sid needs a number, not a string"},
      {R"([{"sid": null}])", "[0].sid needs a number, not null"},
      {R"([{"name": 3}])", "[0].name needs a text, not a number"},
      {R"([{"name": ["x"]}])", "[0].name needs a text, not an array"},
      {R"([{"audio": true}])", "[0].audio needs an array of language codes, not a boolean"},
      {R"([{"audio": "english"}])", "[0].audio needs three-letter language codes, not 'english'"},
      {R"([{"audio": ["eng", "en"]}])", "[0].audio[1] is no three-letter language code: 'en'"},
      {R"([{"audio": ["eng", 1]}])", "[0].audio[1] needs a text, not a number"},
      {R"([{"last-node": "x"}])", "[0].last-node is direct, listed or none, not 'x'"},
      {R"([{"last-node": {}}])", "[0].last-node needs a text, not an object"},
      {R"([{"listed-node": "5"}])", "[0].listed-node needs an array of nodes, not a string"},
      {R"([{"listed-node": [{"usid": 1}]}])", "[0].listed-node[0] needs an object with gsid"},
      {R"([{"listed-node": [5]}])", "[0].listed-node[0] needs an object with gsid"},
      {R"([{"listed-node": [{"gsid": 1}, {"gsid": 1, "sid": 1}]}])",
       "[0].listed-node[1].sid is unknown; the members are gsid, usid, audio"},
      {R"([{"listed-node": [{"gsid": "1"}]}])",
       "[0].listed-node[0].gsid needs a number, not a string"},
      {R"([{"listed-node": [{"gsid": 1, "audio": [""]}]}])",
       "[0].listed-node[0].audio[0] is no three-letter language code: ''"},
  };
  for (const auto& [json, error] : wrong) {
    EXPECT_EQ(error, errorOf(json)) << json;
  }
  EXPECT_THAT(errorOf("[{\n\"gsid\": }]"), StartsWith("parse error at line 2, column 9:"));
  EXPECT_THAT(errorOf(""), StartsWith("parse error at line 1, column 1:"));
}

TEST(RequestFile, QuotesLittleOfALongRequest) {
  const std::string error = errorOf("[\"" + std::string(500'000, 'x'));
  EXPECT_THAT(error, StartsWith("parse error at line 1, column 500003"));
  EXPECT_LT(error.size(), 400U);
}

TEST(RequestFile, IsReadFromItsPath) {
  const TemporaryFile file("json");
  file.write(R"([{"gsid": 3}])");
  EXPECT_EQ(3, readRequest(file.path(), {}).at(0).output.globalSid);
  EXPECT_THROW((void)readRequest("/no/such/file", {}), ToolError);
  EXPECT_THROW((void)readRequest(testing::TempDir(), {}), ToolError);
}

TEST(RequestFile, MayBeAsLargeAsTheLimitAndNoLarger) {
  const TemporaryFile file("json");
  const std::string request = R"([{"gsid": 3}])";
  file.write(request + std::string(kLargestRequest - request.size(), ' '));
  EXPECT_EQ(1U, readRequest(file.path(), {}).size());
  file.write(request + std::string(kLargestRequest - request.size() + 1, ' '));
  EXPECT_THROW((void)readRequest(file.path(), {}), UsageError);
  EXPECT_THROW((void)readRequest("/dev/zero", {}), UsageError) << "has no end";
}

}  // namespace
}  // namespace tevra::tools
