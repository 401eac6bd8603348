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

TEST(UdpReceiver, AtAnAddressOfAnotherMachineIsRefused) {
  EXPECT_THROW(UdpReceiver({"192.0.2.1", kPort}), ToolError);
}

}  // namespace
}  // namespace tevra::tools
