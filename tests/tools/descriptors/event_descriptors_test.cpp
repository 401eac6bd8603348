#include <gtest/gtest.h>

#include "tests/tools/support/descriptor_text.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::bytesOf;
using test::descriptorText;
using test::joined;
using test::payloadText;

TEST(EventDescriptors, ReadShortEvents) {
  EXPECT_EQ("short_event_descriptor (0x4D): language spa, event name \"Tú\", text \"\"\n",
            descriptorText({{0x4D, {'s', 'p', 'a', 3, 'T', 0xC2, 'u', 0}}}));
}

TEST(EventDescriptors, ReadExtendedEventsWithTheirItems) {
  const Bytes items = {1, 'A', 2, 'B', 'C', 0, 1, 'D'};
  EXPECT_EQ(
      "\n"
      "  descriptor number 1\n"
      "  last descriptor number 2\n"
      "  language eng\n"
      "  text \"End\"\n"
      "  item description \"A\", item \"BC\"\n"
      "  item description \"\", item \"D\"\n",
      payloadText(0x4E, joined({{0x12, 'e', 'n', 'g', 8}, items, {3}, bytesOf("End")})));
}

TEST(EventDescriptors, RefuseItemsThatLeaveTheirLoop) {
  EXPECT_EQ(
      " shorter than its syntax demands, 9 bytes\n"
      "  00 65 6e 67 02 01 41 01 42  |.eng..A.B|\n",
      payloadText(0x4E, {0x00, 'e', 'n', 'g', 2, 1, 'A', 1, 'B'}));
  EXPECT_EQ(
      " has a loop longer than itself, 6 bytes\n"
      "  00 65 6e 67 09 00  |.eng..|\n",
      payloadText(0x4E, {0x00, 'e', 'n', 'g', 9, 0}));
}

TEST(EventDescriptors, NameComponents) {
  const auto componentType = [](int first, int type) {
    const std::string text = payloadText(
        0x50, {static_cast<uint8_t>(first), static_cast<uint8_t>(type), 0x07, 'd', 'e', 'u'});
    const size_t start = text.find("component type ") + 15;
    return text.substr(start, text.find_first_of(",\n", text.find(')', start)) - start);
  };
  EXPECT_EQ("0x03 (MPEG-2 video, SD 16:9, 25 Hz)", componentType(0xF1, 0x03));
  EXPECT_EQ("0x0B (AVC video, HD 16:9, 25 Hz)", componentType(0xF5, 0x0B));
  EXPECT_EQ("0x10 (AVC video, HD wider than 16:9, 30 Hz)", componentType(0xF5, 0x10));
  EXPECT_EQ("0x03 (MPEG-1 layer II audio, stereo)", componentType(0xF2, 0x03));
  EXPECT_EQ("0x20 (DVB subtitles for the hard of hearing)", componentType(0xF3, 0x20));
  EXPECT_EQ("0xC2 (enhanced AC-3 audio, stereo)", componentType(0xF4, 0xC2));
  EXPECT_EQ("0x03 (HE-AAC audio, stereo)", componentType(0xF6, 0x03));
  EXPECT_EQ("0x05 (HEVC video)", componentType(0x09, 0x05));
}

TEST(EventDescriptors, ReadComponents) {
  EXPECT_EQ(
      "\n"
      "  stream content 0x01\n"
      "  component type 0xF0 (MPEG-2 video)\n"
      "  component tag 0x07\n"
      "  language deu\n",
      payloadText(0x50, {0xF1, 0xF0, 0x07, 'd', 'e', 'u'}));
  EXPECT_EQ(
      "\n"
      "  stream content extension 0x0F\n"
      "  stream content 0x0C\n"
      "  component type 0x01\n"
      "  component tag 0x07\n"
      "  language deu\n"
      "  text \"Text\"\n",
      payloadText(0x50, {0xFC, 0x01, 0x07, 'd', 'e', 'u', 'T', 'e', 'x', 't'}));
}

TEST(EventDescriptors, NameGenres) {
  EXPECT_EQ(
      "content_descriptor (0x54)\n"
      "  content 0x10 (movie/drama), user byte 0x00\n"
      "  content 0xA5 (cooking), user byte 0x01\n"
      "  content 0x1A, user byte 0x00\n"
      "  content 0x3F (user defined), user byte 0xFF\n"
      "  content 0xF3 (user defined), user byte 0x00\n",
      descriptorText({{0x54, {0x10, 0, 0xA5, 1, 0x1A, 0, 0x3F, 0xFF, 0xF3, 0}}}));
}

TEST(EventDescriptors, ReadParentalRatings) {
  EXPECT_EQ(
      "parental_rating_descriptor (0x55)\n"
      "  country ESP, rating 0x00 (undefined)\n"
      "  country FRA, rating 0x0F (from age 18)\n"
      "  country DEU, rating 0x10 (defined by the broadcaster)\n",
      descriptorText({{0x55, {'E', 'S', 'P', 0, 'F', 'R', 'A', 15, 'D', 'E', 'U', 16}}}));
}

TEST(EventDescriptors, ReadLocalTimeOffsetsOfBothPolarities) {
  // 0xC079124500 is the example of annex C: 1993-10-13 12:45:00.
  EXPECT_EQ(
      "local_time_offset_descriptor (0x58)\n"
      "  country ESP, region 1, offset +01:00, time of change 1993-10-13 12:45:00 UTC,\n"
      "      next offset +02:00\n"
      "  country BRA, region 60, offset -03:30, time of change 1993-10-13 12:45:00 UTC,\n"
      "      next offset -02:00\n",
      descriptorText(
          {{0x58, {'E', 'S', 'P', 0x06, 0x01, 0x00, 0xC0, 0x79, 0x12, 0x45, 0x00, 0x02, 0x00,
                   'B', 'R', 'A', 0xF3, 0x03, 0x30, 0xC0, 0x79, 0x12, 0x45, 0x00, 0x02, 0x00}}}));
}

TEST(EventDescriptors, ReadTheOthers) {
  EXPECT_EQ(
      "\n"
      "  reference service id 1 (0x0001)\n"
      "  reference event id 2 (0x0002)\n",
      payloadText(0x4F, {0, 1, 0, 2}));
  EXPECT_EQ("PDC_descriptor (0x69): day 31, month 12, hour 23, minute 59\n",
            descriptorText({{0x69, {0xFF, 0xE5, 0xFB}}}));
  EXPECT_EQ(
      "\n  CRID type 0x02 (series), CRID \"/x\"\n  CRID type 0x31 (user private), CRID "
      "reference 5 (0x0005)\n",
      payloadText(0x76, {0x08, 2, '/', 'x', 0xC5, 0x00, 0x05}));
  EXPECT_EQ(
      "\n"
      "  user defined no\n"
      "  do not scramble yes\n"
      "  control remote access 2\n"
      "  do not apply revocation yes\n",
      payloadText(0x7E, {0x7D}));
}

TEST(EventDescriptors, RefuseACridInAnUndefinedPlace) {
  EXPECT_EQ(
      " has a CRID in a place that is not defined, 1 byte\n"
      "  0a  |.|\n",
      payloadText(0x76, {0x0A}));
}

}  // namespace
}  // namespace tevra::tools
