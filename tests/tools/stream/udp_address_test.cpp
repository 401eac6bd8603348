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

TEST(UdpAddress, OfRtpIsReadLikewiseAndKnowsIt) {
  const UdpAddress rtp = parseUdpAddress("rtp://@239.1.2.3:5000");
  EXPECT_EQ("239.1.2.3", rtp.address);
  EXPECT_EQ(5000, rtp.port);
  EXPECT_EQ("rtp://239.1.2.3:5000", urlOf(rtp));
  EXPECT_EQ("udp://127.0.0.1:1", urlOf({"127.0.0.1", 1}));
}

/** What is said of a text that is no address. */
std::string faultOf(const std::string& text) {
  try {
    (void)parseUdpAddress(text);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST(UdpAddress, OfAnyOtherTextIsRefused) {
  for (const char* rest :
       {"", "127.0.0.1", "127.0.0.1:", "127.0.0.1:0", ":5000", "127.0.0.1:65536", "127.0.0.1:5000x",
        "localhost:5000", "@:1", "127.0.0:1", "127.0.0.1:99999999999"}) {
    for (const std::string& scheme : {std::string("udp://"), std::string("rtp://")}) {
      EXPECT_EQ("'" + scheme + rest + "' is not " + scheme + "ADDRESS:PORT with an IPv4 address",
                faultOf(scheme + rest));
    }
  }
  for (const char* text : {"file.ts", "", "udp:5", "127.0.0.1:5000", "rtp:/127.0.0.1:5000"}) {
    EXPECT_THROW((void)parseUdpAddress(text), ToolError) << text;
  }
}

}  // namespace
}  // namespace tevra::tools
