#include <gtest/gtest.h>

#include <cstdint>
#include <utility>
#include <vector>

#include "platform/dvb_utils.h"

namespace tevra {
namespace {

TEST(Bcd, TwoDigitsAreTheirDecimalValue) {
  for (const auto& [digits, value] : std::vector<std::pair<uint8_t, uint8_t>>{
           {0x00, 0}, {0x09, 9}, {0x10, 10}, {0x59, 59}, {0x99, 99}}) {
    EXPECT_EQ(bcd4_2_bin(digits), value);
    EXPECT_EQ(bin_2_bcd4(value), digits);
  }
}

TEST(Bcd, DigitsAboveNineCountAsTheyStand) {
  EXPECT_EQ(bcd4_2_bin(0x0A), 10);
  EXPECT_EQ(bcd4_2_bin(0xA0), 100);
  EXPECT_EQ(bcd4_2_bin(0xFF), 165);
}

TEST(Bcd, ValuesOfThreeDigitsKeepTheLastTwo) {
  EXPECT_EQ(bin_2_bcd4(100), 0x00);
  EXPECT_EQ(bin_2_bcd4(123), 0x23);
  EXPECT_EQ(bin_2_bcd4(255), 0x55);
}

TEST(Bcd, EveryTwoDigitValueComesBack) {
  for (uint8_t value = 0; value <= 99; ++value) {
    EXPECT_EQ(bcd4_2_bin(bin_2_bcd4(value)), value);
  }
}

}  // namespace
}  // namespace tevra
