#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::descriptorText;
using test::payloadText;

TEST(MpegDescriptors, NamesVideoStreams) {
  EXPECT_EQ(
      "video_stream_descriptor (0x02)\n"
      "  multiple frame rate yes\n"
      "  frame rate code 3 (25 Hz)\n"
      "  not only MPEG-1\n"
      "  constrained parameter no\n"
      "  still picture yes\n"
      "  profile and level 0x48\n"
      "  chroma format 1 (4:2:0)\n"
      "  frame rate extension yes\n",
      descriptorText({{0x02, {0x99, 0x48, 0x7F}}}));
}

TEST(MpegDescriptors, ReadsAnMpeg1VideoStreamWithoutProfile) {
  EXPECT_EQ(
      "\n"
      "  multiple frame rate no\n"
      "  frame rate code 1 (23.976 Hz)\n"
      "  MPEG-1 only\n"
      "  constrained parameter yes\n"
      "  still picture no\n",
      payloadText(0x02, {0x0E}));
}

TEST(MpegDescriptors, ReadsAudioAndLanguages) {
  EXPECT_EQ(": free format no, id 1, layer 2, variable rate no\n", payloadText(0x03, {0x67}));
  EXPECT_EQ(
      "ISO_639_language_descriptor (0x0A)\n"
      "  language ita, audio type 0 (undefined)\n"
      "  language eng, audio type 3 (visual impaired commentary)\n"
      "  language fra, audio type 128\n",
      descriptorText({{0x0A, {'i', 't', 'a', 0, 'e', 'n', 'g', 3, 'f', 'r', 'a', 0x80}}}));
}

TEST(MpegDescriptors, ReadsConditionalAccess) {
  EXPECT_EQ("CA_descriptor (0x09): CA system id 0x0500, CA PID 8190 (0x1FFE)\n",
            descriptorText({{0x09, {0x05, 0x00, 0xFF, 0xFE}}}));
  EXPECT_EQ(": CA system id 0x0500, CA PID 1 (0x0001), private data 0a ff\n",
            payloadText(0x09, {0x05, 0x00, 0xE0, 0x01, 0x0A, 0xFF}));
}

TEST(MpegDescriptors, DumpsLongPrivateDataBelow) {
  EXPECT_EQ(
      ": CA system id 0x0500, CA PID 1 (0x0001)\n"
      "  private data, 9 bytes\n"
      "    41 42 43 44 45 46 47 48 49  |ABCDEFGHI|\n",
      payloadText(0x09, {0x05, 0x00, 0xE0, 0x01, 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 'I'}));
}

TEST(MpegDescriptors, ReadsFourCharacterIdentifiers) {
  EXPECT_EQ("registration_descriptor (0x05): format identifier 0x48455643 (HEVC)\n",
            descriptorText({{0x05, {'H', 'E', 'V', 'C'}}}));
  EXPECT_EQ(": private data indicator 0xFF410001 (.A..)\n",
            payloadText(0x0F, {0xFF, 'A', 0x00, 0x01}));
  EXPECT_EQ(": copyright identifier 0x49534243 (ISBC), additional info 07\n",
            payloadText(0x0D, {'I', 'S', 'B', 'C', 7}));
}

TEST(MpegDescriptors, ReadsRatesInBitsPerSecond) {
  EXPECT_EQ("maximum_bitrate_descriptor (0x0E): maximum bitrate 15000000 bit/s\n",
            descriptorText({{0x0E, {0xC0, 0x92, 0x7C}}}));
  EXPECT_EQ(": leak rate 400 bit/s, buffer bytes 4194303\n",
            payloadText(0x10, {0xC0, 0x00, 0x01, 0xFF, 0xFF, 0xFF}));
}

TEST(MpegDescriptors, ReadsPictureGeometry) {
  EXPECT_EQ(
      "\n"
      "  horizontal size 720\n"
      "  vertical size 576\n"
      "  aspect ratio 2 (4:3)\n",
      payloadText(0x07, {0x0B, 0x40, 0x24, 0x02}));
  EXPECT_EQ(": horizontal offset 720, vertical offset 576, window priority 2\n",
            payloadText(0x08, {0x0B, 0x40, 0x24, 0x02}));
}

TEST(MpegDescriptors, ReadsTheSmallOnes) {
  EXPECT_EQ(
      "\n"
      "  hierarchy type 4 (data partitioning)\n"
      "  layer index 1\n"
      "  embedded layer index 2\n"
      "  channel 3\n",
      payloadText(0x04, {0xF4, 0xC1, 0xC2, 0xC3}));
  EXPECT_EQ(": alignment type 2 (video access unit)\n", payloadText(0x06, {2}));
  EXPECT_EQ(": external clock yes, accuracy integer 31, accuracy exponent 5\n",
            payloadText(0x0B, {0xDF, 0xBF}));
  EXPECT_EQ(
      "\n"
      "  bound valid yes\n"
      "  LTW offset lower bound 1\n"
      "  LTW offset upper bound 32767\n",
      payloadText(0x0C, {0x80, 0x01, 0xFF, 0xFF}));
  EXPECT_EQ(": leak valid yes\n", payloadText(0x11, {0xFF}));
  EXPECT_EQ(": closed GOP yes, identical GOP no, max GOP length 15\n",
            payloadText(0x12, {0x80, 0x0F}));
  EXPECT_EQ("MPEG-4_video_descriptor (0x1B): profile and level 0xF5\n",
            descriptorText({{0x1B, {0xF5}}}));
  EXPECT_EQ(": profile and level 0x58\n", payloadText(0x1C, {0x58}));
}

TEST(MpegDescriptors, ReadsCarousels) {
  EXPECT_EQ(": carousel id 4294967295, format id 0x00\n",
            payloadText(0x13, {0xFF, 0xFF, 0xFF, 0xFF, 0x00}));
  EXPECT_EQ(
      "\n"
      "  association tag 0x0029\n"
      "  use 0x0100\n"
      "  selector 01 02\n"
      "  private data 03\n",
      payloadText(0x14, {0x00, 0x29, 0x01, 0x00, 2, 1, 2, 3}));
}

TEST(MpegDescriptors, ReadsAvcAndHevc) {
  EXPECT_EQ(
      "\n"
      "  profile 100\n"
      "  constraints 0x00\n"
      "  level 40\n"
      "  still pictures no\n"
      "  24 hour pictures no\n"
      "  frame packing SEI not present yes\n",
      payloadText(0x28, {100, 0, 40, 0x3F}));
  EXPECT_EQ(
      "\n"
      "  profile space 0\n"
      "  main tier\n"
      "  profile 2\n"
      "  profile compatibility 0x20000000\n"
      "  progressive source yes\n"
      "  interlaced source no\n"
      "  non packed yes\n"
      "  frame only yes\n"
      "  level 153\n"
      "  temporal layer subset yes\n"
      "  still pictures no\n"
      "  24 hour pictures no\n"
      "  temporal id min 0\n"
      "  temporal id max 1\n",
      payloadText(0x38, {0x02, 0x20, 0, 0, 0, 0xB0, 0, 0, 0, 0, 0, 153, 0x9F, 0x1F, 0x3F}));
}

}  // namespace
}  // namespace tevra::tools
