#include "tools/descriptors/stream_names.h"

#include <map>

#include <gtest/gtest.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools {
namespace {

using test::descriptorRecord;
using test::streamRecord;

TEST(StreamNames, AreThoseOfTheType) {
  const std::map<int, std::string> names = {{0x02, "MPEG-2 video"},
                                            {0x06, "private PES"},
                                            {0x1B, "AVC video"},
                                            {0x86, "SCTE 35 splice information"},
                                            {0xEE, "stream type 0xEE"}};
  for (const auto& [type, name] : names) {
    EXPECT_EQ(name, streamName(streamRecord(type, 512)));
  }
}

TEST(StreamNames, AreThoseOfTheContentsInPrivatePes) {
  const std::map<int, std::string> names = {{0x6A, "AC-3 audio"}, {0x7A, "E-AC-3 audio"},
                                            {0x7B, "DTS audio"},  {0x59, "DVB subtitles"},
                                            {0x56, "teletext"},   {0x66, "data broadcast"}};
  for (const auto& [tag, name] : names) {
    EXPECT_EQ(name, streamName(streamRecord(
                        0x06, 512, {descriptorRecord(0x52, "x"), descriptorRecord(tag, "x")})));
    EXPECT_EQ("MPEG-2 video", streamName(streamRecord(0x02, 512, {descriptorRecord(tag, "x")})));
  }
}

}  // namespace
}  // namespace tevra::tools
