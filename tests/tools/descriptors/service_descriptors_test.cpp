#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::bytesOf;
using test::descriptorText;
using test::joined;
using test::payloadText;

TEST(ServiceDescriptors, ShowTextsInUtf8) {
  EXPECT_EQ("network_name_descriptor (0x40): name \"Süd\"\n",
            descriptorText({{0x40, {0x10, 0x00, 0x0F, 'S', 0xFC, 'd'}}}));
  EXPECT_EQ("bouquet_name_descriptor (0x47): name \"\"\n", descriptorText({{0x47, {}}}));
  EXPECT_EQ(

      "\n"
      "  service type 0x16 (AVC SD digital television)\n"
      "  provider name \"A\"\n"
      "  service name \"B\"\n",
      payloadText(0x48, {0x16, 1, 'A', 1, 'B'}));
}

TEST(ServiceDescriptors, StandOneFieldALineWhenTheyAreLong) {
  const Bytes payload = joined({{0x16, 12}, bytesOf("Sample Media"), {9}, bytesOf("Canal Uno")});
  EXPECT_EQ(
      "service_descriptor (0x48)\n"
      "  service type 0x16 (AVC SD digital television)\n"
      "  provider name \"Sample Media\"\n"
      "  service name \"Canal Uno\"\n",
      descriptorText({{0x48, payload}}));
}

TEST(ServiceDescriptors, ShowWhatFollowsTheSyntax) {
  EXPECT_EQ(

      "\n"
      "  service type 0x01 (digital television)\n"
      "  provider name \"\"\n"
      "  service name \"\"\n"
      "  trailing bytes 55\n",
      payloadText(0x48, {0x01, 0, 0, 0x55}));
}

TEST(ServiceDescriptors, ListServices) {
  EXPECT_EQ(
      "service_list_descriptor (0x41)\n"
      "  service id 101 (0x0065), service type 0x1F (HEVC digital television)\n"
      "  service id 65535 (0xFFFF), service type 0x80\n",
      descriptorText({{0x41, {0x00, 0x65, 0x1F, 0xFF, 0xFF, 0x80}}}));
}

TEST(ServiceDescriptors, ReadMultilingualNames) {
  EXPECT_EQ("\n  language deu, name \"Ab\"\n  language eng, name \"C\"\n",
            payloadText(0x5B, {'d', 'e', 'u', 2, 'A', 'b', 'e', 'n', 'g', 1, 'C'}));
  EXPECT_EQ("\n  language deu, provider name \"P\", service name \"S\"\n",
            payloadText(0x5D, {'d', 'e', 'u', 1, 'P', 1, 'S'}));
}

TEST(ServiceDescriptors, ReadCountryAvailability) {
  EXPECT_EQ(": available in\n  country ESP\n  country FRA\n",
            payloadText(0x49, {0x80, 'E', 'S', 'P', 'F', 'R', 'A'}));
  EXPECT_EQ(": not available in\n  country ESP\n", payloadText(0x49, {0x7F, 'E', 'S', 'P'}));
}

TEST(ServiceDescriptors, ReadEveryKindOfLinkage) {
  const Bytes ids = {0x00, 0x01, 0x00, 0x02, 0x00, 0x03};
  const std::string head =
      "\n"
      "  transport stream id 1 (0x0001)\n"
      "  original network id 2 (0x0002)\n"
      "  service id 3 (0x0003)\n";
  EXPECT_EQ(head + "  linkage type 0x05 (service replacement service)\n  private data 09\n",
            payloadText(0x4A, joined({ids, {0x05, 0x09}})));
  EXPECT_EQ(head +
                "  linkage type 0x08 (mobile hand-over)\n"
                "  hand over type 2 (local variation of the same service)\n"
                "  from a NIT\n"
                "  network id 4 (0x0004)\n"
                "  initial service id 5 (0x0005)\n",
            payloadText(0x4A, joined({ids, {0x08, 0x2E, 0x00, 0x04, 0x00, 0x05}})));
  EXPECT_EQ(head +
                "  linkage type 0x08 (mobile hand-over)\n"
                "  hand over type 0\n"
                "  from an SDT\n",
            payloadText(0x4A, joined({ids, {0x08, 0x0F}})));
  EXPECT_EQ(head +
                "  linkage type 0x0D (event linkage)\n"
                "  target event id 6 (0x0006)\n"
                "  target listed yes\n"
                "  event simulcast no\n",
            payloadText(0x4A, joined({ids, {0x0D, 0x00, 0x06, 0xBF}})));
}

TEST(ServiceDescriptors, ReadReferences) {
  EXPECT_EQ(
      "\n"
      "  transport stream id 1 (0x0001), original network id 2 (0x0002), service id 3 (0x0003)\n"
      "  transport stream id 4 (0x0004), original network id 5 (0x0005), service id 6 (0x0006)\n",
      payloadText(0x4B, {0, 1, 0, 2, 0, 3, 0, 4, 0, 5, 0, 6}));
  EXPECT_EQ(": reference service id 258 (0x0102)\n", payloadText(0x4C, {1, 2}));
}

TEST(ServiceDescriptors, ReadTheOthers) {
  EXPECT_EQ("\n  CA system id 0x0500\n  CA system id 0x1800\n",
            payloadText(0x53, {0x05, 0x00, 0x18, 0x00}));
  EXPECT_EQ("private_data_specifier_descriptor (0x5F): specifier 0x00000028 (EACEM)\n",
            descriptorText({{0x5F, {0, 0, 0, 0x28}}}));
  EXPECT_EQ(": identifier \"a.b\"\n", payloadText(0x71, bytesOf("a.b")));
  EXPECT_EQ(": authority \"example.org\"\n", payloadText(0x73, bytesOf("example.org")));
  EXPECT_EQ(": stuffing ff ff\n", payloadText(0x42, {0xFF, 0xFF}));
  EXPECT_EQ("stuffing_descriptor (0x42)\n", descriptorText({{0x42, {}}}));
}

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
