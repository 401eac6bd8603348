#include "tools/report/page/figures.h"

#include <gtest/gtest.h>

namespace tevra::tools::report {
namespace {

TEST(Figures, GiveBitRatesThreeDigitsThatMeanSomething) {
  EXPECT_EQ("0 bit/s", bitRateText(0));
  EXPECT_EQ("760 bit/s", bitRateText(760.4));
  EXPECT_EQ("1.00 kbit/s", bitRateText(999.6));
  EXPECT_EQ("1.44 kbit/s", bitRateText(1444));
  EXPECT_EQ("64.2 kbit/s", bitRateText(64'180));
  EXPECT_EQ("100 kbit/s", bitRateText(99'960));
  EXPECT_EQ("1.60 Mbit/s", bitRateText(1'600'000));
  EXPECT_EQ("38.0 Mbit/s", bitRateText(38e6));
  EXPECT_EQ("2000 Gbit/s", bitRateText(2e12));
}

TEST(Figures, TellLittleFromNothing) {
  EXPECT_EQ("0.0 %", shareText(0));
  EXPECT_EQ("<0.1 %", shareText(0.0001));
  EXPECT_EQ("0.1 %", shareText(0.001));
  EXPECT_EQ("100.0 %", shareText(1));
}

TEST(Figures, GroupDigitsByThree) {
  EXPECT_EQ("0", groupedText(0));
  EXPECT_EQ("999", groupedText(999));
  EXPECT_EQ("1\u202F000", groupedText(1000));
  EXPECT_EQ("12\u202F345\u202F678", groupedText(12'345'678));
}

TEST(Figures, SayHowLongAStreamIs) {
  EXPECT_EQ("9.41 s", lengthText(9.4123));
  EXPECT_EQ("2 min 5 s", lengthText(125.2));
  EXPECT_EQ("1 h", lengthText(3600));
}

TEST(Figures, WriteCoordinatesShort) {
  EXPECT_EQ("0", coordinate(0));
  EXPECT_EQ("0", coordinate(-0.001));
  EXPECT_EQ("1.5", coordinate(1.5));
  EXPECT_EQ("1.25", coordinate(1.25));
  EXPECT_EQ("100", coordinate(100));
  EXPECT_EQ("-3.3", coordinate(-3.304));
}

}  // namespace
}  // namespace tevra::tools::report
