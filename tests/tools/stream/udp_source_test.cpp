#include "tools/stream/udp_source.h"

#include <gmock/gmock.h>

#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "tests/tools/support/udp_sender.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

constexpr int kPort = 21046;

LiveOptions impatient() {
  LiveOptions live;
  live.timeoutSeconds = 1;
  return live;
}

std::string readOnce(ByteSource& source, size_t size = 4096) {
  std::vector<uint8_t> buffer(size);
  const size_t count = source.read(buffer.data(), buffer.size());
  return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST(UdpSource, GivesThePayloadOfTheDatagramsInOrder) {
  UdpSource source({"127.0.0.1", kPort}, impatient());
  test::sendDatagram("Gone", kPort);
  test::sendDatagram("Gtwo", kPort);
  EXPECT_EQ("Gone", readOnce(source, 4));
  EXPECT_EQ("Gt", readOnce(source, 2));
  EXPECT_EQ("wo", readOnce(source, 2));
}

TEST(UdpSource, PassesOverDatagramsWithoutPayload) {
  UdpSource source({"127.0.0.1", kPort}, impatient());
  test::sendDatagram("", kPort);
  test::sendDatagram(std::string("\x80\x21", 2) + std::string(10, '\0'), kPort);  // a header alone
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
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
  live.timeoutSeconds = 0;  // would end it at once
  live.onSilence = [](std::chrono::milliseconds /*silence*/) { test::sendDatagram("Gtwo", kPort); };
  UdpSource source({"127.0.0.1", kPort}, live);
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
  EXPECT_EQ("Gtwo", readOnce(source));
}

/** What is said when nothing comes any more. */
std::string silenceOf(ByteSource& source) {
  try {
    (void)readOnce(source);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

TEST(UdpSource, SaysWhetherNothingEverArrivedOrNothingMore) {
  LiveOptions live;
  live.timeoutSeconds = 0;
  UdpSource source({"127.0.0.1", kPort}, live);
  EXPECT_THAT(silenceOf(source), StartsWith("no packet came from udp://127.0.0.1:21046 in 0 s: "));
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
  EXPECT_THAT(silenceOf(source),
              StartsWith("nothing more has come from udp://127.0.0.1:21046 for 0 s: "));
}

TEST(UdpSource, ExplainsWhyWhatCameIsOfNoUse) {
  UdpSource source({"127.0.0.1", kPort}, impatient());
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
  UdpSource source({"127.0.0.1", kPort}, impatient(), 10);
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
      lossLines({12, 1}),
      ElementsAre("12 datagrams lost in the kernel's receive buffer: the machine is busy, or "
                  "net.core.rmem_max too small",
                  "1 datagram lost because what had come before was not taken in time"));
}

size_t payloadOffset(const std::string& datagram) {
  return rtpPayloadOffset(reinterpret_cast<const uint8_t*>(datagram.data()), datagram.size());
}

TEST(RtpPayload, LiesBehindTheHeader) {
  const std::string rest(11, '\0');
  EXPECT_EQ(12U, payloadOffset("\x80" + rest + "G"));
  EXPECT_EQ(12U + 8, payloadOffset("\x82" + rest + "........G"));
  const std::string extension("\xBE\xDE\0\x01....", 8);
  EXPECT_EQ(12U + 8, payloadOffset("\x90" + rest + extension + "G"));
}

TEST(RtpPayload, IsAllOfADatagramWithoutAHeader) {
  EXPECT_EQ(0U, payloadOffset(""));
  EXPECT_EQ(0U, payloadOffset("G" + std::string(187, '\x80')));
  EXPECT_EQ(0U, payloadOffset("\x40" + std::string(20, '\0'))) << "version 1";
  EXPECT_EQ(0U, payloadOffset("\x80" + std::string(10, '\0'))) << "shorter than a header";
  EXPECT_EQ(0U, payloadOffset("\x8F" + std::string(20, '\0'))) << "fifteen CSRCs do not fit";
  EXPECT_EQ(0U, payloadOffset("\x90" + std::string(13, '\xFF') + "\xFF\xFF.")) << "nor that";
}

}  // namespace
}  // namespace tevra::tools
