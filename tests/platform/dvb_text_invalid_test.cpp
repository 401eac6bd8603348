#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

using namespace std::string_literals;

struct InvalidCase {
  const char* reason;
  std::string bytes;
};

const std::vector<InvalidCase> kInvalid = {
    {"overlong zero", "\xC0\x80"},
    {"overlong slash", "\xC0\xAF"},
    {"overlong two bytes", "\xC1\xBF"},
    {"overlong three bytes", "\xE0\x80\x80"},
    {"longest overlong three bytes", "\xE0\x9F\xBF"},
    {"overlong four bytes", "\xF0\x80\x80\x80"},
    {"longest overlong four bytes", "\xF0\x8F\xBF\xBF"},
    {"first high surrogate", "\xED\xA0\x80"},
    {"last high surrogate", "\xED\xAF\xBF"},
    {"first low surrogate", "\xED\xB0\x80"},
    {"last low surrogate", "\xED\xBF\xBF"},
    {"pair of surrogates", "\xED\xA0\xBD\xED\xB8\x80"},
    {"U+110000", "\xF4\x90\x80\x80"},
    {"U+140000", "\xF5\x80\x80\x80"},
    {"U+1FFFFF", "\xF7\xBF\xBF\xBF"},
    {"five bytes", "\xF8\x88\x80\x80\x80"},
    {"six bytes", "\xFC\x84\x80\x80\x80\x80"},
    {"byte FE", "\xFE"},
    {"byte FF", "\xFF"},
    {"continuation alone", "\x80"},
    {"one continuation too many", "\xC3\xA9\xA9"},
    {"two bytes, cut", "\xC3"},
    {"three bytes, cut after one", "\xE2"},
    {"three bytes, cut after two", "\xE2\x82"},
    {"four bytes, cut after three", "\xF0\x9F\x98"},
    {"two bytes, interrupted",
     "\xC3"
     "a"},
    {"three bytes, interrupted",
     "\xE2\x82"
     "a"},
    {"ISO 8859-1",
     "Espa\xF1"
     "a"},
};

TEST(DvbTextOfInvalidUtf8, FailsAndLeavesTheOutput) {
  for (const InvalidCase& invalid : kInvalid) {
    std::string dvb = "before";
    EXPECT_FALSE(dvbTextFromUTF8(invalid.bytes, dvb)) << invalid.reason;
    EXPECT_EQ(dvb, "before") << invalid.reason;
  }
}

TEST(DvbTextOfInvalidUtf8, FailsWhereverInTheTextItStands) {
  for (const InvalidCase& invalid : kInvalid) {
    std::string dvb = "before";
    EXPECT_FALSE(dvbTextFromUTF8("Name " + invalid.bytes, dvb)) << invalid.reason;
    EXPECT_FALSE(dvbTextFromUTF8(invalid.bytes + " Name", dvb)) << invalid.reason;
    EXPECT_EQ(dvb, "before") << invalid.reason;
  }
}

TEST(DvbTextOfInvalidUtf8, FailsAlsoBehindAZeroByte) {
  std::string dvb = "before";
  EXPECT_FALSE(dvbTextFromUTF8("Name\0\xFF"s, dvb));
  EXPECT_EQ(dvb, "before");
}

TEST(DvbTextOfInvalidUtf8, TheNeighboursOfTheInvalidAreValid) {
  for (const std::string& valid :
       {"\x7F"s, "\xC2\x80"s, "\xDF\xBF"s, "\xE0\xA0\x80"s, "\xED\x9F\xBF"s, "\xEE\x80\x80"s,
        "\xEF\xBF\xBF"s, "\xF0\x90\x80\x80"s, "\xF4\x8F\xBF\xBF"s}) {
    std::string dvb;
    EXPECT_TRUE(dvbTextFromUTF8(valid, dvb)) << testing::PrintToString(valid);
  }
}

}  // namespace
}  // namespace tevra
