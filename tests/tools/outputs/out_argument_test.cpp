#include "tools/outputs/out_argument.h"

#include <gtest/gtest.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using Languages = std::vector<std::string>;

OutputDraft parse(const std::string& text, const OutputDraft& defaults = {}) {
  return parseOutArgument(text, defaults);
}

/** What is said of the text, without the text. */
std::string errorOf(const std::string& text) {
  try {
    (void)parse(text);
  } catch (const UsageError& error) {
    const std::string start = "--out '" + text + "': ";
    const std::string what = error.what();
    return what.compare(0, start.size(), start) == 0 ? what.substr(start.size()) : "?" + what;
  }
  return "";
}

TEST(OutArgument, CarriesEveryKeyToItsMember) {
  const OutputDraft draft = parse(
      "service=101,gsid=-7,sid=1201,name=Uno HD,tsid=5,onid=65535,audio=eng+spa,next-node=-1,"
      "output-param=9,last-node=direct,usid=8");
  EXPECT_EQ(101, draft.service);
  EXPECT_EQ(-7, draft.output.globalSid);
  EXPECT_EQ(1201, draft.output.outputSid);
  EXPECT_EQ("Uno HD", draft.output.name);
  EXPECT_EQ(5, draft.output.transportStreamId);
  EXPECT_EQ(65535, draft.output.originalNetworkId);
  EXPECT_EQ((Languages{"eng", "spa"}), draft.output.audio);
  EXPECT_EQ(-1, draft.output.nextNode);
  EXPECT_EQ(9, draft.output.outputParam);
  EXPECT_EQ(LastNode::kDirect, draft.output.lastNode);
  EXPECT_EQ(8, draft.output.uniqueSid);
}

TEST(OutArgument, ListsNodesInOrder) {
  const OutputDraft draft =
      parse("last-node=listed,listed-node=5:6:eng+spa,sid=1,listed-node=-7,listed-node=8:9:none");
  EXPECT_EQ(LastNode::kListed, draft.output.lastNode);
  const auto& nodes = draft.output.listedNodes;
  ASSERT_EQ(3U, nodes.size());
  EXPECT_EQ(5, nodes[0].globalSid);
  EXPECT_EQ(6, nodes[0].uniqueSid);
  EXPECT_EQ((Languages{"eng", "spa"}), nodes[0].audio);
  EXPECT_EQ(-7, nodes[1].globalSid);
  EXPECT_FALSE(nodes[1].audio.has_value());
  EXPECT_EQ(Languages{}, nodes[2].audio);
}

TEST(OutArgument, TakesCommasAndBackslashesBehindABackslash) {
  EXPECT_EQ("Uno, Due", parse("name=Uno\\, Due").output.name);
  EXPECT_EQ("a\\b", parse("name=a\\\\b").output.name);
  EXPECT_EQ(",\\,", parse("name=\\,\\\\\\,,gsid=1").output.name);
  EXPECT_EQ("a=b", parse("name=a=b").output.name);
  EXPECT_EQ("", parse("name=").output.name);
  EXPECT_EQ("Télé 2", parse("name=Télé 2").output.name);
  EXPECT_EQ((Languages{"eng", "spa"}), parse("audio=eng\\,spa").output.audio);
}

TEST(OutArgument, TakesHexadecimalNumbers) {
  EXPECT_EQ(0x1F, parse("sid=0x1F").output.outputSid);
  EXPECT_EQ(0xFFFF, parse("sid=0Xffff").output.outputSid);
  EXPECT_EQ(10, parse("sid=010").output.outputSid) << "not octal";
}

TEST(OutArgument, LeavesTheRestAsTheDefaultsHaveIt) {
  OutputDraft defaults;
  defaults.service = 101;
  defaults.output.audio = Languages{"eng"};
  defaults.output.transportStreamId = 5;
  defaults.output.lastNode = LastNode::kListed;
  defaults.output.listedNodes = {ListedNode{1, 1, std::nullopt}};
  const OutputDraft kept = parse("gsid=2", defaults);
  EXPECT_EQ(101, kept.service);
  EXPECT_EQ(Languages{"eng"}, kept.output.audio);
  EXPECT_EQ(5, kept.output.transportStreamId);
  ASSERT_EQ(1U, kept.output.listedNodes.size());
  const OutputDraft changed = parse("service=102,audio=none,tsid=6,listed-node=7", defaults);
  EXPECT_EQ(102, changed.service);
  EXPECT_EQ(Languages{}, changed.output.audio);
  EXPECT_EQ(6, changed.output.transportStreamId);
  ASSERT_EQ(1U, changed.output.listedNodes.size()) << "in the place of the defaults'";
  EXPECT_EQ(7, changed.output.listedNodes[0].globalSid);
}

TEST(OutArgument, SaysWhereItCameFrom) {
  EXPECT_EQ("--out 'gsid=1,name=a\\,b'", parse("gsid=1,name=a\\,b").origin);
}

TEST(OutArgument, SaysExactlyWhatIsWrong) {
  const std::string keys =
      "service, gsid, sid, name, tsid, onid, audio, next-node, output-param, last-node, usid, "
      "listed-node";
  const std::string noItem = " is not KEY=VALUE; in a value a comma stands behind a backslash";
  const std::vector<std::pair<std::string, std::string>> wrong = {
      {"", "''" + noItem},
      {"gsid", "'gsid'" + noItem},
      {"gsid=1,", "''" + noItem},
      {",gsid=1", "''" + noItem},
      {"name=a,b", "'b'" + noItem},
      {"=1", "unknown key ''; the keys are " + keys},
      {"gsdi=1", "unknown key 'gsdi'; the keys are " + keys},
      {"gsid=1, sid=2", "unknown key ' sid'; the keys are " + keys},
      {"GSID=1", "unknown key 'GSID'; the keys are " + keys},
      {"gsid=1,sid=2,gsid=1", "'gsid' is given twice"},
      {"name=a,name=b", "'name' is given twice"},
      {"sid=", "sid needs a whole number, not ''"},
      {"sid=x", "sid needs a whole number, not 'x'"},
      {"sid=1x", "sid needs a whole number, not '1x'"},
      {"sid=1.5", "sid needs a whole number, not '1.5'"},
      {"sid= 1", "sid needs a whole number, not ' 1'"},
      {"sid=+1", "sid needs a whole number, not '+1'"},
      {"sid=0x", "sid needs a whole number, not '0x'"},
      {"sid=0x-1", "sid needs a whole number, not '0x-1'"},
      {"sid=-1", "sid -1 is out of range, 0 to 65535"},
      {"service=65536", "service 65536 is out of range, 0 to 65535"},
      {"tsid=0x10000", "tsid 0x10000 is out of range, 0 to 65535"},
      {"onid=65536", "onid 65536 is out of range, 0 to 65535"},
      {"gsid=2147483648", "gsid 2147483648 is out of range, -2147483648 to 2147483647"},
      {"usid=-2147483649", "usid -2147483649 is out of range, -2147483648 to 2147483647"},
      {"next-node=99999999999999999999",
       "next-node 99999999999999999999 is out of range, -2147483648 to 2147483647"},
      {"audio=en",
       "audio needs three-letter language codes with + between them, or none, not 'en'"},
      {"audio=", "audio needs three-letter language codes with + between them, or none, not ''"},
      {"last-node=x", "last-node is direct, listed or none, not 'x'"},
      {"listed-node=x", "listed-node is GSID[:USID[:LANGUAGES]] with + between languages, not 'x'"},
      {"name=Caf\xE9", "name is not UTF-8: convert it, with iconv for one"},
      {"name=a\\b", "a backslash stands only before a comma or another backslash"},
      {"name=a\\", "a backslash stands only before a comma or another backslash"},
  };
  for (const auto& [text, error] : wrong) {
    EXPECT_EQ(error, errorOf(text));
  }
}

TEST(OutArgument, TakesTheEndsOfEveryRange) {
  for (const char* text : {"sid=0", "sid=65535", "gsid=-2147483648", "gsid=2147483647"}) {
    EXPECT_EQ("", errorOf(text)) << text;
  }
}

}  // namespace
}  // namespace tevra::tools
