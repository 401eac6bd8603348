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

}  // namespace
}  // namespace tevra::tools
