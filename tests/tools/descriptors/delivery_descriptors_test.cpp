#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::descriptorText;
using test::payloadText;

TEST(DeliveryDescriptors, ReadSatellites) {
  EXPECT_EQ(
      "satellite_delivery_system_descriptor (0x43)\n"
      "  frequency 11.778 GHz\n"
      "  orbital position 19.2 degrees\n"
      "  east\n"
      "  polarization 1 (vertical)\n"
      "  DVB-S2\n"
      "  roll off 2 (0.20)\n"
      "  modulation 2 (8PSK)\n"
      "  symbol rate 27.5 Msymbol/s\n"
      "  inner FEC 3 (3/4)\n",
      descriptorText({{0x43, {0x01, 0x17, 0x78, 0x00, 0x01, 0x92, 0xB6, 0x02, 0x75, 0x00, 0x03}}}));
}

TEST(DeliveryDescriptors, LeaveTheRollOffOutOfDvbS) {
  const std::string text =
      payloadText(0x43, {0x01, 0x17, 0x78, 0x00, 0x00, 0x50, 0x01, 0x02, 0x75, 0x00, 0x03});
  EXPECT_NE(std::string::npos, text.find("  west\n  polarization 0 (horizontal)\n  DVB-S\n  modu"));
}

TEST(DeliveryDescriptors, ReadCables) {
  EXPECT_EQ(
      "\n"
      "  frequency 306.5 MHz\n"
      "  outer FEC 2 (RS(204/188))\n"
      "  modulation 5 (256-QAM)\n"
      "  symbol rate 6.9 Msymbol/s\n"
      "  inner FEC 15 (none)\n",
      payloadText(0x44, {0x03, 0x06, 0x50, 0x00, 0xFF, 0xF2, 0x05, 0x00, 0x69, 0x00, 0x0F}));
}

TEST(DeliveryDescriptors, ReadTerrestrials) {
  EXPECT_EQ(
      "\n"
      "  frequency 498.166 MHz\n"
      "  bandwidth 0 (8 MHz)\n"
      "  high priority or non-hierarchical\n"
      "  no time slicing\n"
      "  MPE-FEC\n"
      "  constellation 2 (64-QAM)\n"
      "  hierarchy 0 (none, native interleaver)\n"
      "  HP code rate 2 (3/4)\n"
      "  LP code rate 4 (7/8)\n"
      "  guard interval 3 (1/4)\n"
      "  transmission mode 1 (8k)\n"
      "  other frequencies yes\n",
      payloadText(0x5A, {0x02, 0xF8, 0x24, 0x18, 0x1B, 0x82, 0x9B, 0xFF, 0xFF, 0xFF, 0xFF}));
}

TEST(DeliveryDescriptors, ListFrequenciesInTheirOwnCoding) {
  EXPECT_EQ(": coding type 1 (satellite)\n  frequency 11.778 GHz\n",
            payloadText(0x62, {0xFD, 0x01, 0x17, 0x78, 0x00}));
  EXPECT_EQ(": coding type 2 (cable)\n  frequency 306 MHz\n  frequency 0.0001 MHz\n",
            payloadText(0x62, {0xFE, 0x03, 0x06, 0x00, 0x00, 0x00, 0x00, 0x00, 0x01}));
  EXPECT_EQ(": coding type 3 (terrestrial)\n  frequency 498 MHz\n",
            payloadText(0x62, {0xFF, 0x02, 0xF7, 0xE3, 0x40}));
  EXPECT_EQ(": coding type 0 (undefined)\n  frequency 0x00000001\n",
            payloadText(0x62, {0xFC, 0, 0, 0, 1}));
}

TEST(DeliveryDescriptors, RefuseDigitsThatAreNone) {
  EXPECT_EQ(
      " has a decimal digit over 9 in its frequency, 11 bytes\n"
      "  0a 17 78 00 01 92 b6 02 75 00 03  |..x.....u..|\n",
      payloadText(0x43, {0x0A, 0x17, 0x78, 0x00, 0x01, 0x92, 0xB6, 0x02, 0x75, 0x00, 0x03}));
}

TEST(DeliveryDescriptors, ReadTheOptionalPartsOfS2) {
  EXPECT_EQ(
      "\n"
      "  scrambling sequence selector yes\n"
      "  multiple input streams yes\n"
      "  backwards compatible no\n"
      "  not time sliced yes\n"
      "  TS GS mode 3 (transport stream)\n"
      "  scrambling sequence index 131072\n"
      "  input stream id 7\n",
      payloadText(0x79, {0xDF, 0xFE, 0x00, 0x00, 0x07}));
}

}  // namespace
}  // namespace tevra::tools
