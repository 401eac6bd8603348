#include "tools/outputs/strict_json.h"

#include <gmock/gmock.h>

namespace tevra::tools {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

std::string errorOf(const std::string& text) {
  try {
    (void)parseStrictJson(text);
  } catch (const StrictJsonError& error) {
    return error.what();
  }
  return "";
}

TEST(StrictJson, IsReadAsTheLibraryReadsIt) {
  const auto json = parseStrictJson(R"({"a": [1, {"b": "\u00e9"}], "c": null})");
  EXPECT_EQ(1, json.at("a").at(0));
  EXPECT_EQ("é", json.at("a").at(1).at("b"));
  EXPECT_TRUE(json.at("c").is_null());
}

TEST(StrictJson, NamesThePlaceOfAFault) {
  EXPECT_THAT(errorOf("{\n \"a\": [1,]}"), StartsWith("parse error at line 2, column 10:"));
  EXPECT_THAT(errorOf(""), StartsWith("parse error at line 1, column 1:"));
  EXPECT_THAT(errorOf("{} x"), HasSubstr("line 1, column 4"));
  EXPECT_THAT(errorOf("\"\xFF\""), HasSubstr("ill-formed UTF-8"));
  EXPECT_THAT(errorOf("1e999"), AllOf(HasSubstr("1e999"), Not(HasSubstr("json.exception"))));
  EXPECT_THAT(errorOf("\"a\nb\""), Not(HasSubstr("\n"))) << "stays on one line";
}

TEST(StrictJson, RefusesANameThatComesTwice) {
  EXPECT_EQ("a is given twice", errorOf(R"({"a": 1, "b": 2, "a": 1})"));
  EXPECT_EQ("[1].b.c is given twice", errorOf(R"([{"c": [1, 2]}, {"b": {"c": 1, "c": 2}}])"));
  EXPECT_EQ("a[2][1].b is given twice",
            errorOf(R"({"a": [1, [2, 3], [{"b": 4}, {"b": 5, "b": 6}]]})"));
  EXPECT_EQ("", errorOf(R"({"a": {"a": 1}, "b": [{"a": 1}, {"a": 1}]})"));
}

TEST(StrictJson, TakesAnyDepth) {
  const std::string open(200'000, '[');
  EXPECT_THAT(errorOf(open), HasSubstr("unexpected end of input"));
  EXPECT_EQ("", errorOf(open + std::string(200'000, ']')));
}

}  // namespace
}  // namespace tevra::tools
