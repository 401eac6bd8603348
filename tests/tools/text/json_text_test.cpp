#include "tools/text/json_text.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(JsonText, WritesEveryKindOfValue) {
  Json json;
  EXPECT_EQ("null", jsonLine(json));
  json["flag"] = true;
  json["negative"] = -1;
  json["largest"] = UINT64_MAX;
  json["small"] = int8_t{5};
  json["share"] = 0.5;
  json["text"] = "a\"b";
  json["texts"] = std::vector<std::string>{"a", "b"};
  json["pair"] = {{"pid", 1}, {"of", nullptr}};
  json["none"] = Json::object();
  EXPECT_EQ(R"({"flag":true,"negative":-1,"largest":18446744073709551615,"small":5,"share":0.5,)"
            R"("text":"a\"b","texts":["a","b"],"pair":{"pid":1,"of":null},"none":{}})",
            jsonLine(json));
}

TEST(JsonText, KeepsMembersInTheirOrderOverSeveralLinesOrOnOne) {
  Json json;
  json["b"] = 0;
  json["a"].push_back(true);
  json["b"] = 1;
  EXPECT_EQ("{\"b\":1,\"a\":[true]}", jsonLine(json));
  EXPECT_EQ("{\n  \"b\": 1,\n  \"a\": [\n    true\n  ]\n}", indentedJson(json));
}

TEST(JsonText, ReplacesWhatIsNoUtf8) {
  EXPECT_EQ("\"é\xEF\xBF\xBD\"", jsonLine("é\xFF"));
}

TEST(JsonText, HasNullForNothingAndAnArrayForNoRecords) {
  EXPECT_EQ("5", jsonLine(orNull(std::optional<int>(5))));
  EXPECT_EQ("null", jsonLine(orNull(std::optional<int>())));
  const auto twice = [](int number) { return Json(2 * number); };
  EXPECT_EQ("[2,4]", jsonLine(jsonList(std::vector<int>{1, 2}, twice)));
  EXPECT_EQ("[]", jsonLine(jsonList(std::vector<int>(), twice)));
}

}  // namespace
}  // namespace tevra::tools
