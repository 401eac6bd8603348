#include "tools/stream/udp_source.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "tests/tools/support/udp_sender.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

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
  EXPECT_EQ("Gone", readOnce(source));
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
  UdpSource source({"127.0.0.1", kPort}, impatient());
  EXPECT_THAT(silenceOf(source), StartsWith("no packet came from udp://127.0.0.1:21046 in 1 s: "));
  test::sendDatagram("Gone", kPort);
  EXPECT_EQ("Gone", readOnce(source));
  EXPECT_THAT(silenceOf(source),
              StartsWith("nothing more has come from udp://127.0.0.1:21046 for 1 s: "));
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

TEST(UdpSource, OfAnAddressOfAnotherMachineIsRefused) {
  EXPECT_THROW(UdpSource({"192.0.2.1", kPort}, impatient()), ToolError);
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
