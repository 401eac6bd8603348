#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::descriptorText;
using test::payloadText;

TEST(StreamDescriptors, ReadTeletextPages) {
  EXPECT_EQ(
      "teletext_descriptor (0x56)\n"
      "  language ita, teletext type 0x01 (initial page), page 100\n"
      "  language eng, teletext type 0x02 (subtitle page), page 888\n",
      descriptorText({{0x56, {'i', 't', 'a', 0x09, 0x00, 'e', 'n', 'g', 0x10, 0x88}}}));
  EXPECT_EQ("VBI_teletext_descriptor (0x46)\n  language ita, teletext type 0x1F, page 799\n",
            descriptorText({{0x46, {'i', 't', 'a', 0xFF, 0x99}}}));
}

TEST(StreamDescriptors, ReadSubtitles) {
  EXPECT_EQ(
      "subtitling_descriptor (0x59)\n"
      "  language spa, subtitling type 0x10 (DVB subtitles), composition page id 1, ancillary page "
      "id 2\n",
      descriptorText({{0x59, {'s', 'p', 'a', 0x10, 0, 1, 0, 2}}}));
}

TEST(StreamDescriptors, ReadVbiLines) {
  EXPECT_EQ(
      "\n"
      "  data service id 0x01 (EBU teletext)\n"
      "    first field, line offset 7\n"
      "    second field, line offset 31\n"
      "  data service id 0x03, reserved aa\n"
      "  data service id 0x04 (VPS)\n",
      payloadText(0x45, {1, 2, 0xE7, 0xDF, 3, 1, 0xAA, 4, 0}));
}

TEST(StreamDescriptors, ReadDataBroadcasts) {
  EXPECT_EQ(
      "\n"
      "  data broadcast id 0x000A (system software update)\n"
      "  selector 01 02\n",
      payloadText(0x66, {0x00, 0x0A, 1, 2}));
  EXPECT_EQ(": data broadcast id 0x1234\n", payloadText(0x66, {0x12, 0x34}));
  EXPECT_EQ(
      "\n"
      "  data broadcast id 0x0007 (object carousel)\n"
      "  component tag 0x2A\n"
      "  selector none\n"
      "  language deu\n"
      "  text \"T\"\n",
      payloadText(0x64, {0x00, 0x07, 0x2A, 0, 'd', 'e', 'u', 1, 'T'}));
}

TEST(StreamDescriptors, ReadAc3) {
  EXPECT_EQ("AC-3_descriptor (0x6A)\n", descriptorText({{0x6A, {0x00}}}));
  EXPECT_EQ(
      "\n"
      "  component type 0x42 (stereo)\n"
      "  bsid 0x08\n"
      "  main id 0x01\n"
      "  associated service 0x02\n"
      "  additional info 03\n",
      payloadText(0x6A, {0xF0, 0x42, 8, 1, 2, 3}));
}

TEST(StreamDescriptors, ReadEnhancedAc3) {
  EXPECT_EQ(": mix info yes, component type 0xC4 (multichannel), substream2 0x09\n",
            payloadText(0x7A, {0x8A, 0xC4, 9}));
}

TEST(StreamDescriptors, ReadAac) {
  EXPECT_EQ("AAC_descriptor (0x7C): profile and level 0x29\n", descriptorText({{0x7C, {0x29}}}));
  EXPECT_EQ(
      "\n"
      "  profile and level 0x58\n"
      "  SAOC de no\n"
      "  AAC type 0x03 (stereo)\n"
      "  additional info 01\n",
      payloadText(0x7C, {0x58, 0x80, 0x03, 0x01}));
}

TEST(StreamDescriptors, ReadApplications) {
  EXPECT_EQ(
      "\n  application type 0x0010 (HbbTV), AIT version 31\n"
      "  application type 0x7FFF, AIT version 0\n",
      payloadText(0x6F, {0x80, 0x10, 0xFF, 0x7F, 0xFF, 0xE0}));
}

TEST(StreamDescriptors, NameExtensions) {
  EXPECT_EQ(
      "extension_descriptor (0x7F): extension tag 0x04 (T2_delivery_system_descriptor), "
      "selector 01\n",
      descriptorText({{0x7F, {0x04, 0x01}}}));
  EXPECT_EQ(
      "\n"
      "  extension tag 0x06 (supplementary_audio_descriptor)\n"
      "  complete programme mix\n"
      "  editorial classification 1\n"
      "  language eng\n",
      payloadText(0x7F, {0x06, 0x87, 'e', 'n', 'g'}));
}

}  // namespace
}  // namespace tevra::tools
