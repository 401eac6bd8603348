#include "tools/stream/udp_sink.h"

#include <cerrno>

#include <gmock/gmock.h>

#include "tests/tools/support/failing_send.h"
#include "tests/tools/support/ts_builder.h"
#include "tests/tools/support/udp_receiver.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPort = 21047;
const std::string kName = "udp://127.0.0.1:" + std::to_string(kPort);

class UdpSinkTest : public testing::Test {
 protected:
  /** Writes so many more, and notes their bytes. */
  void write(int packets) {
    for (int i = 0; i < packets; ++i) {
      const TsPacket packet = writer_.stream(100, 0);
      written_.append(reinterpret_cast<const char*>(packet.data()), kTsPacketSize);
      sink_.write(packet);
    }
  }

  test::PacketWriter writer_;
  std::string written_;
  UdpSink sink_{kName};
};

TEST_F(UdpSinkTest, SendsSevenPacketsInADatagram) {
  test::UdpReceiver receiver(kPort);
  write(16);
  EXPECT_EQ(written_.substr(0, 1316), receiver.receive());
  EXPECT_EQ(written_.substr(1316, 1316), receiver.receive());
  EXPECT_FALSE(receiver.hasMore());
}

TEST_F(UdpSinkTest, SendsTheRestWhenFlushedOrClosed) {
  test::UdpReceiver receiver(kPort);
  write(2);
  sink_.flush();
  EXPECT_EQ(written_, receiver.receive());
  sink_.flush();
  EXPECT_FALSE(receiver.hasMore()) << "no empty datagram";
  write(1);
  sink_.close();
  EXPECT_EQ(written_.substr(2 * 188), receiver.receive());
}

TEST_F(UdpSinkTest, SendsAllToWhoeverBeginsToListen) {
  write(70);  // each of them is answered by a port that nobody has
  test::UdpReceiver receiver(kPort);
  written_.clear();
  write(7);
  EXPECT_EQ(written_, receiver.receive());
  EXPECT_THAT(sink_.faults(), IsEmpty());
}

TEST_F(UdpSinkTest, CountsWhatTheMachineDoesNotSendAndGoesOn) {
  test::UdpReceiver receiver(kPort);
  {
    const test::FailingSend none(ENOBUFS);
    write(14);
  }
  written_.clear();
  write(7);
  EXPECT_EQ(written_, receiver.receive());
  EXPECT_THAT(sink_.faults(),
              ElementsAre("2 datagrams could not be sent: No buffer space available"));
}

std::string errorOf(const std::string& name) {
  try {
    const UdpSink sink(name);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST(UdpSinkAddress, IsRefusedWhereNothingCanBeSentTo) {
  EXPECT_THAT(errorOf("udp://127.0.0.1"), StartsWith("'udp://127.0.0.1' is not udp://"));
  EXPECT_THAT(errorOf("rtp://127.0.0.1:5000"), StartsWith("cannot send to rtp://127.0.0.1:5000: "));
  EXPECT_THAT(errorOf("udp://255.255.255.255:5000"),
              StartsWith("cannot send to udp://255.255.255.255:5000: "));
}

TEST(UdpSinkAddress, WithoutARouteIsRefusedWithAdvice) {
  const std::string error = errorOf("udp://192.0.2.1:5000");
  if (error.empty()) {
    GTEST_SKIP() << "this network has a route to all";
  }
  EXPECT_EQ("cannot send to udp://192.0.2.1:5000: Network is unreachable: is there a route to it?",
            error);
}

}  // namespace
}  // namespace tevra::tools
