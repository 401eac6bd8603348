#include "tools/text/json_text.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(JsonText, KeepsMembersInTheirOrderOverSeveralLinesOrOnOne) {
  const Json json = {{"b", 1}, {"a", Json::array({true})}};
  EXPECT_EQ("{\"b\":1,\"a\":[true]}", jsonLine(json));
  EXPECT_EQ("{\n  \"b\": 1,\n  \"a\": [\n    true\n  ]\n}", indentedJson(json));
}

TEST(JsonText, ReplacesWhatIsNoUtf8) {
  EXPECT_EQ("\"é\xEF\xBF\xBD\"", jsonLine("é\xFF"));
}

TEST(JsonText, HasNullForNothingAndAnArrayForNoRecords) {
  EXPECT_EQ(Json(5), orNull(std::optional<int>(5)));
  EXPECT_TRUE(orNull(std::optional<int>()).is_null());
  const auto twice = [](int number) { return Json(2 * number); };
  EXPECT_EQ(Json({2, 4}), jsonList(std::vector<int>{1, 2}, twice));
  EXPECT_EQ(Json::array(), jsonList(std::vector<int>(), twice));
}

}  // namespace
}  // namespace tevra::tools
