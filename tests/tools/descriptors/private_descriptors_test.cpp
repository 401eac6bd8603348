#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::descriptorText;
using test::payloadText;

TEST(PrivateDescriptors, ReadLogicalChannelsAsTheirOwnerDefinesThem) {
  const test::Bytes channels = {0x0D, 0x49, 0xBF, 0xFF, 0x0D, 0x4A, 0x40, 0x01};
  EXPECT_EQ(
      "private_data_specifier_descriptor (0x5F): specifier 0x00000028 (EACEM)\n"
      "logical_channel_descriptor (0x83)\n"
      "  service id 3401 (0x0D49), visible, channel number 1023\n"
      "  service id 3402 (0x0D4A), hidden, channel number 1\n",
      descriptorText({{0x5F, {0, 0, 0, 0x28}}, {0x83, channels}}));
  EXPECT_EQ(
      "private_data_specifier_descriptor (0x5F): specifier 0x00000029 (NorDig)\n"
      "logical_channel_descriptor (0x83)\n"
      "  service id 3401 (0x0D49), visible, channel number 16383\n"
      "  service id 3402 (0x0D4A), hidden, channel number 1\n",
      descriptorText({{0x5F, {0, 0, 0, 0x29}}, {0x83, channels}}));
}

TEST(PrivateDescriptors, SayWhenTheOwnerOfLogicalChannelsIsAssumed) {
  EXPECT_EQ(": assumed owner EACEM\n  service id 3401 (0x0D49), visible, channel number 1\n",
            payloadText(0x83, {0x0D, 0x49, 0xFC, 0x01}));
}

TEST(PrivateDescriptors, AreDumpedWhenTheirOwnerIsUnknown) {
  EXPECT_EQ(
      "private_data_specifier_descriptor (0x5F): specifier 0x00000001\n"
      "user_defined_descriptor (0x83), 4 bytes\n"
      "  0d 49 fc 01  |.I..|\n",
      descriptorText({{0x5F, {0, 0, 0, 1}}, {0x83, {0x0D, 0x49, 0xFC, 0x01}}}));
  EXPECT_EQ("user_defined_descriptor (0x81), 0 bytes\n", descriptorText({{0x81, {}}}));
}

TEST(PrivateDescriptors, AreReadWhenTheirFormatIsRegistered) {
  EXPECT_EQ(
      "registration_descriptor (0x05): format identifier 0x43554549 (CUEI)\n"
      "cue_identifier_descriptor (0x8A): cue stream type 1 (all commands)\n",
      descriptorText({{0x05, {'C', 'U', 'E', 'I'}}, {0x8A, {1}}}));
  EXPECT_EQ(
      "registration_descriptor (0x05): format identifier 0x47413934 (GA94)\n"
      "AC-3_audio_stream_descriptor (0x81)\n"
      "  sample rate code 0\n"
      "  bsid 8\n"
      "  bit rate code 15\n"
      "  surround mode 0\n"
      "  bsmod 0\n"
      "  channel code 2\n"
      "  full service yes\n"
      "caption_service_descriptor (0x86): count 1\n"
      "  language eng, digital yes, caption service 2, easy reader no, wide aspect ratio yes\n",
      descriptorText({{0x05, {'G', 'A', '9', '4'}},
                      {0x81, {0x08, 0x3C, 0x05}},
                      {0x86, {0xE1, 'e', 'n', 'g', 0xC2, 0x7F, 0xFF}}}));
}

}  // namespace
}  // namespace tevra::tools
