#include "tools/stream/udp_receiver.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

#include "tests/support/emulation.h"
#include "tests/tools/support/udp_sender.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kPort = 21047;

class Receiver : public testing::Test {
 protected:
  std::string receive() {
    const size_t size = receiver_.receive(buffer_.data(), buffer_.size());
    return {buffer_.begin(), buffer_.begin() + static_cast<std::ptrdiff_t>(size)};
  }

  UdpReceiver receiver_{{"127.0.0.1", kPort}};
  std::array<uint8_t, 65536> buffer_{};
};

TEST_F(Receiver, TakesDatagramsOfAnySize) {
  const std::string largest(65'507, 'G');
  for (const std::string& datagram : {std::string("one"), std::string(), largest}) {
    test::sendDatagram(datagram, kPort);
  }
  EXPECT_EQ("one", receive());
  EXPECT_EQ("", receive());
  EXPECT_EQ(largest, receive());
  EXPECT_EQ("", receive()) << "soon, though none comes";
}

TEST_F(Receiver, CountsWhatTheKernelHadNoRoomFor) {
  if (tevra::test::kEmulated) {
    GTEST_SKIP() << "an emulator does not pass on the account of a socket";
  }
  constexpr uint64_t kMost = 2000;
  uint64_t sent = 0;
  while (receiver_.dropped() < 3 && sent < kMost) {
    test::sendDatagram(std::string(60'000, 'G'), kPort);
    ++sent;
  }
  uint64_t received = 0;
  while (!receive().empty()) {
    ++received;
  }
  EXPECT_EQ(3U, receiver_.dropped());
  EXPECT_EQ(sent, received + receiver_.dropped());
}

TEST_F(Receiver, IsNotRobbedOfWhatComesToItsAddress) {
  EXPECT_THROW(UdpReceiver({"127.0.0.1", kPort}), ToolError) << "all would come to the second";
}

/** Why none can be made. */
std::string faultOf(const UdpAddress& address) {
  try {
    const UdpReceiver receiver(address);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST(UdpReceiver, AtAnAddressOfAnotherMachineIsRefused) {
  EXPECT_EQ(
      "cannot receive at udp://192.0.2.1:21047: Cannot assign requested address: it is no address "
      "of this machine",
      faultOf({"192.0.2.1", kPort}));
}

TEST(UdpReceiver, OfAGroupWithoutARouteIsRefusedWithAdvice) {
  const std::string fault = faultOf({"239.1.1.1", kPort, kRtpScheme});
  if (fault.empty()) {
    GTEST_SKIP() << "this network has a route for groups";
  }
  EXPECT_EQ(
      "cannot join rtp://239.1.1.1:21047: No such device: is there a route? ip route add "
      "239.0.0.0/8 dev eth1, for one",
      fault);
}

}  // namespace
}  // namespace tevra::tools
