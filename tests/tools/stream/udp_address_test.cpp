#include "tools/stream/udp_address.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>

#include "tests/platform/temporary_directory.h"
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

TEST(UdpAddress, IsExplainedWhereTheKernelRefusesIt) {
  const auto said = [](int error, const std::string& name) {
    return explained(error, socketAddress(parseUdpAddress(name)));
  };
  EXPECT_EQ("No such device: is there a route? ip route add 239.0.0.0/8 dev eth1, for one",
            said(ENODEV, "udp://239.1.2.3:5000"));
  EXPECT_EQ("Network is unreachable: is there a route? ip route add 224.0.0.0/8 dev eth1, for one",
            said(ENETUNREACH, "udp://224.1.2.3:5000"));
  EXPECT_EQ("Network is unreachable: is there a route to it?",
            said(ENETUNREACH, "udp://192.0.2.1:5000"));
  EXPECT_EQ("Cannot assign requested address: it is no address of this machine",
            said(EADDRNOTAVAIL, "udp://192.0.2.1:5000"));
  EXPECT_EQ("Address already in use", said(EADDRINUSE, "udp://127.0.0.1:5000"));
}

TEST(UdpAddress, OfAnotherSchemeIsToldFromAFile) {
  for (const char* name :
       {"srt://239.1.2.3:5000", "UDP://239.1.2.3:5000", "http://", "h-1+x://a"}) {
    EXPECT_TRUE(hasUnknownScheme(name)) << name;
  }
  for (const char* name : {"udp://239.1.2.3:5000", "rtp://x", "file.ts", "-", "", "://a", "a/b://c",
                           "srt:/a", "/no/such/file"}) {
    EXPECT_FALSE(hasUnknownScheme(name)) << name;
  }
  const tevra::test::TemporaryDirectory folder;
  std::filesystem::create_directory(folder / "srt:");
  const auto before = std::filesystem::current_path();
  std::filesystem::current_path(folder.path());
  EXPECT_FALSE(hasUnknownScheme("srt://a.ts")) << "a file in a folder that is there";
  std::filesystem::current_path(before);
}

}  // namespace
}  // namespace tevra::tools
