#include "tools/report/page/markup.h"

#include <map>
#include <string>

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

constexpr const char* kUnfit = "\xEF\xBF\xBD";

TEST(Markup, EscapesWhatEndsATextOrAnAttribute) {
  EXPECT_EQ("&lt;script&gt;&amp;&quot;&#39;", escaped("<script>&\"'"));
  EXPECT_EQ("", escaped(""));
  EXPECT_EQ("Télé 名前 🎬", escaped("Télé 名前 🎬"));
  EXPECT_EQ("a\nb\n", escaped("a\nb\n"));
}

TEST(Markup, ReplacesWhatAPageMustNotHold) {
  const std::map<std::string, std::string> unfit = {
      {"control", "\x01"},
      {"escape", "\x1b"},
      {"carriage return", "\r"},
      {"delete", "\x7f"},
      {"C1 control", "\xC2\x85"},
      {"embedding", "\xE2\x80\xAA"},
      {"override", "\xE2\x80\xAE"},
      {"isolate", "\xE2\x81\xA6"},
      {"end of isolate", "\xE2\x81\xA9"},
      {"noncharacter", "\xEF\xBF\xBE"},
      {"noncharacter of the last plane", "\xF4\x8F\xBF\xBF"},
      {"lone continuation", "\x80"},
  };
  for (const auto& [name, text] : unfit) {
    EXPECT_EQ("a" + std::string(kUnfit) + "b", escaped("a" + text + "b")) << name;
  }
  EXPECT_EQ(std::string("a") + kUnfit + "b", escaped(std::string_view("a\0b", 3)));
}

TEST(Markup, KeepsTheMarksThatRightToLeftTextNeeds) {
  const std::string text = "\xE2\x80\x8F\xD7\xA2\xE2\x80\x8E";
  EXPECT_EQ(text, escaped(text));
}

TEST(Markup, NeverLetsAHalfCharacterSwallowAMark) {
  EXPECT_EQ(std::string::npos, escaped("\xF0\x9F<b>").find('<'));
  EXPECT_EQ(std::string::npos, escaped("\xE2\x80\"").find('"'));
}

TEST(Markup, WritesElementsInsideEachOther) {
  Markup markup;
  {
    const auto outer = markup.open("g", {{"class", "a\"b"}});
    markup.leaf("text", {{"x", "1"}}, "a<b");
    markup.mark("rect", {{"y", "2"}});
  }
  EXPECT_EQ("<g class=\"a&quot;b\"><text x=\"1\">a&lt;b</text>\n<rect y=\"2\"/></g>\n",
            markup.take());
}

}  // namespace
}  // namespace tevra::tools::report
