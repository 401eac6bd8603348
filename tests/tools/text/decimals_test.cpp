#include "tools/text/decimals.h"

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(Decimals, ScaleWholeNumbersWithoutZerosAtTheEnd) {
  EXPECT_EQ("11.778 GHz", scaledText(11'778'000'000, 9, "GHz"));
  EXPECT_EQ("0.05 MHz", scaledText(50'000, 6, "MHz"));
  EXPECT_EQ("8 MHz", scaledText(8'000'000, 6, "MHz"));
}

TEST(Decimals, AreAsManyAsAreAskedFor) {
  EXPECT_EQ("9.41", fixedText(9.4123, 2));
  EXPECT_EQ("100.0", fixedText(100, 1));
  EXPECT_EQ("760", fixedText(760.4, 0));
}

}  // namespace
}  // namespace tevra::tools
