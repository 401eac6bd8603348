#include "tools/stream/udp_address.h"

#include <gtest/gtest.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

TEST(UdpAddress, IsReadFromItsUrl) {
  const UdpAddress unicast = parseUdpAddress("udp://127.0.0.1:5000");
  EXPECT_EQ("127.0.0.1", unicast.address);
  EXPECT_EQ(5000, unicast.port);
  EXPECT_EQ("239.1.2.3", parseUdpAddress("udp://@239.1.2.3:65535").address);
}

TEST(UdpAddress, OfAnyOtherTextIsRefused) {
  for (const char* text :
       {"udp://", "udp://127.0.0.1", "udp://127.0.0.1:", "udp://127.0.0.1:0", "udp://:5000",
        "udp://127.0.0.1:65536", "udp://127.0.0.1:5000x", "udp://localhost:5000", "udp://@:1",
        "udp://127.0.0:1", "udp://127.0.0.1:99999999999", "file.ts", "", "udp:5"}) {
    EXPECT_THROW((void)parseUdpAddress(text), ToolError) << text;
  }
}

}  // namespace
}  // namespace tevra::tools
