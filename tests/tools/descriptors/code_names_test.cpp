#include "tools/descriptors/code_names.h"

#include <map>

#include <gtest/gtest.h>

namespace tevra::tools {
namespace {

TEST(CodeNames, NameTheStreamTypesThatAnOutputCanCarry) {
  const std::map<int, std::string> names = {{0x01, "MPEG-1 video"}, {0x02, "MPEG-2 video"},
                                            {0x03, "MPEG-1 audio"}, {0x04, "MPEG-2 audio"},
                                            {0x06, "private PES"},  {0x0F, "AAC audio in ADTS"},
                                            {0x10, "MPEG-4 video"}, {0x11, "AAC audio in LATM"},
                                            {0x1B, "AVC video"},    {0x24, "HEVC video"}};
  for (const auto& [type, name] : names) {
    EXPECT_EQ(name, streamTypeName(type)) << type;
  }
}

TEST(CodeNames, NameTheCommonestOfTheUsersStreamTypes) {
  EXPECT_EQ("AC-3 audio (ATSC)", streamTypeName(0x81));
  EXPECT_EQ("SCTE 35 splice information", streamTypeName(0x86));
  EXPECT_EQ("", streamTypeName(0xEE));
}

}  // namespace
}  // namespace tevra::tools
