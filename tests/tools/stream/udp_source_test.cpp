#include "tools/stream/udp_source.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/support/udp_sender.h"

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPort = 21046;

std::string readOnce(ByteSource& source, size_t size = 4096) {
  std::vector<uint8_t> buffer(size);
  const size_t count = source.read(buffer.data(), buffer.size());
  return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(UdpSource, GivesThePayloadOfTheDatagramsInOrder) {
  UdpSource source({"127.0.0.1", kPort});
  test::sendDatagram("Gone", kPort);
  test::sendDatagram("Gtwo", kPort);
  EXPECT_EQ("Gone", readOnce(source, 4));
  EXPECT_EQ("Gt", readOnce(source, 2));
  EXPECT_EQ("wo", readOnce(source, 2));
}

/** Behind an RTP header of this sequence number. */
std::string rtp(char number, const std::string& payload) {
  return std::string("\x80\x21\0", 3) + number + std::string(8, '\0') + payload;
}

TEST(UdpSource, PassesOverDatagramsWithoutPayload) {
  UdpSource source({"127.0.0.1", kPort});
  test::sendDatagram("", kPort);
  test::sendDatagram(rtp(1, ""), kPort);
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
}

TEST(UdpSource, LeavesOutThePaddingOfRtp) {
  UdpSource source({"127.0.0.1", kPort});
  const std::string packet = "G" + std::string(187, '.');
  std::string datagram = rtp(1, packet) + std::string("...\x04");
  datagram[0] = '\xA0';
  test::sendDatagram(datagram, kPort);
  EXPECT_EQ(packet, readOnce(source));
}

TEST(UdpSource, TakesTheLargestDatagramAndATruncatedHeader) {
  UdpSource source({"127.0.0.1", kPort});
  const std::string largest(65'507, 'G');
  test::sendDatagram(largest, kPort);
  EXPECT_EQ(largest, readOnce(source, 70'000));
  const std::string truncated = rtp(1, "").substr(0, 11);
  test::sendDatagram(truncated, kPort);
  EXPECT_EQ(truncated, readOnce(source)) << "it is none, and so payload";
}

TEST(UdpSource, CountsWhatIsMissingBetweenTheRtpDatagramsThatItReads) {
  UdpSource source(parseUdpAddress("rtp://127.0.0.1:21046"));
  const std::string packet = "G" + std::string(187, '.');
  for (const char number : {'\1', '\4'}) {
    test::sendDatagram(rtp(number, packet), kPort);
    EXPECT_EQ(packet, readOnce(source));
  }
  EXPECT_THAT(source.faults(),
              ElementsAre("2 datagrams lost or late on the way, by the sequence numbers of RTP"));
}

TEST(UdpSource, EndsWhenStopped) {
  LiveOptions live;
  int asked = 0;
  live.stopped = [&asked] { return ++asked > 2; };
  UdpSource source({"127.0.0.1", kPort}, live);
  EXPECT_EQ("", readOnce(source));
}

TEST(UdpSource, ThatPausesIsWaitedForWhereSilenceIsToldOf) {
  LiveOptions live;
  live.onSilence = [](std::chrono::milliseconds /*silence*/) { test::sendDatagram("Gtwo", kPort); };
  UdpSource source({"127.0.0.1", kPort}, live);
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
  EXPECT_EQ("Gtwo", readOnce(source));
}

TEST(UdpSource, ExplainsWhyWhatCameIsOfNoUse) {
  UdpSource source({"127.0.0.1", kPort});
  const auto explain = [&](uint64_t packets) { return source.explainNothing("udp://x", packets); };
  EXPECT_THAT(explain(0),
              StartsWith("no packet came from udp://x in less than 1 s: is the stream"));
  test::sendDatagram("Gone", kPort);
  (void)readOnce(source);
  EXPECT_EQ(
      "what came from udp://x in less than 1 s, 4 bytes, is no transport stream: no packets "
      "of 188, 192 or 204 bytes",
      explain(0));
  EXPECT_THAT(explain(7), StartsWith("7 packets came from udp://x in less than 1 s, but no "
                                     "complete table: "));
}

/** Waits until it tells of losses, and returns what. */
std::vector<std::string> faultsThatCome(const ByteSource& source) {
  for (int tries = 0; source.faults().empty() && tries < 10'000; ++tries) {
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return source.faults();
}

TEST(UdpSource, DropsAndCountsWhatASlowReaderLeavesNoRoomFor) {
  UdpSource source({"127.0.0.1", kPort}, {}, 10);
  EXPECT_THAT(source.faults(), IsEmpty());
  test::sendDatagram("Gone..", kPort);
  test::sendDatagram("Gtwo..", kPort);
  EXPECT_THAT(faultsThatCome(source),
              ElementsAre("1 datagram lost because what had come before was not taken in time"));
  test::sendDatagram("Gend", kPort);
  EXPECT_EQ("Gone..", readOnce(source, 6));
  EXPECT_EQ("Gend", readOnce(source)) << "behind it nothing of the one that did not fit";
  test::sendDatagram("Gthree", kPort);
  EXPECT_EQ("Gthree", readOnce(source)) << "there is room again";
}

TEST(UdpLosses, AreToldEachInALine) {
  EXPECT_THAT(lossLines({}), IsEmpty());
  EXPECT_THAT(
      lossLines({12, 1, 2}),
      ElementsAre("12 datagrams lost in the kernel's receive buffer: the machine is busy, or "
                  "net.core.rmem_max too small",
                  "1 datagram lost because what had come before was not taken in time",
                  "2 datagrams lost or late on the way, by the sequence numbers of RTP"));
}

}  // namespace
}  // namespace tevra::tools
