#include "tools/stream/rtp.h"

#include <gtest/gtest.h>

#include <string>

namespace tevra::tools {
namespace {

const std::string kPacket = "G" + std::string(187, '.');

std::optional<RtpHeader> headerOf(const std::string& datagram) {
  return rtpHeader(reinterpret_cast<const uint8_t*>(datagram.data()), datagram.size());
}

TEST(RtpHeader, TellsNumberAndSenderAndEndsWherePayloadBegins) {
  const std::string numbers(
      "\x21\x12\x34"
      "time"
      "\xCA\xFE\xBA\xBE",
      11);
  const auto header = headerOf("\x80" + numbers + kPacket + kPacket);
  ASSERT_TRUE(header);
  EXPECT_EQ(0x1234, header->sequenceNumber);
  EXPECT_EQ(0xCAFEBABE, header->sender);
  EXPECT_EQ(0U, header->padding);
  EXPECT_EQ(12U, header->size);
  EXPECT_EQ(12U, headerOf("\x80" + numbers).value().size) << "no payload";
  EXPECT_EQ(12U + 8, headerOf("\x82" + numbers + "........" + kPacket).value().size) << "two CSRCs";
  const std::string extension("\xBE\xDE\0\x01....", 8);
  EXPECT_EQ(12U + 8, headerOf("\x90" + numbers + extension + kPacket).value().size);
}

TEST(RtpHeader, TellsOfPaddingBehindThePayload) {
  const std::string header = "\xA0" + std::string(11, '.');
  const std::string padding("...\x04", 4);
  EXPECT_EQ(4U, headerOf(header + kPacket + padding).value().padding);
  EXPECT_EQ(4U, headerOf(header + padding).value().padding) << "all of it";
}

TEST(RtpHeader, IsNotThereInAnythingElse) {
  EXPECT_FALSE(headerOf(""));
  EXPECT_FALSE(headerOf("G" + std::string(187, '\x80')));
  EXPECT_FALSE(headerOf("\x40" + std::string(20, '\0'))) << "version 1";
  EXPECT_FALSE(headerOf("\x80" + std::string(10, '\0'))) << "shorter than a header";
  EXPECT_FALSE(headerOf("\x8F" + std::string(20, '\0'))) << "fifteen CSRCs do not fit";
  EXPECT_FALSE(headerOf("\xA0" + std::string(10, '\0') + ".G..\x06")) << "nor so much padding";
  EXPECT_FALSE(headerOf("\x80" + std::string(187, '\x80'))) << "the middle of a packet";
  EXPECT_FALSE(headerOf("\x80" + std::string(11, '\x80') + kPacket + "G")) << "the end of one";
  EXPECT_FALSE(headerOf("\x90" + std::string(13, '\xFF') + "\xFF\xFF.")) << "nor that";
}

/** What is missing before each of these, of one sender. */
std::vector<uint64_t> missingOf(const std::vector<uint16_t>& numbers) {
  RtpSequence sequence;
  std::vector<uint64_t> missing;
  for (const uint16_t number : numbers) {
    missing.push_back(sequence.missingBefore({12, 0, number, 1}));
  }
  return missing;
}

using Counts = std::vector<uint64_t>;

TEST(RtpSequence, BeginsWithAnyNumberAndMissesNothingInARow) {
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({700, 701, 702}));
}

TEST(RtpSequence, MissesWhatIsLeftOut) {
  EXPECT_EQ((Counts{0, 1, 0, 3000}), missingOf({7, 9, 10, 3011}));
}

TEST(RtpSequence, GoesOnBehind65535) {
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({65534, 65535, 0}));
  EXPECT_EQ((Counts{0, 4}), missingOf({65534, 3}));
}

TEST(RtpSequence, MissesOnceWhatComesLateOrTwice) {
  EXPECT_EQ((Counts{0, 1, 0, 0}), missingOf({7, 9, 8, 10})) << "late";
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({7, 7, 8})) << "twice";
  EXPECT_EQ((Counts{0, 2, 0, 0}), missingOf({65535, 2, 65534, 3})) << "late by a wrap";
}

TEST(RtpSequence, BeginsAnewWithAJump) {
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({7, 3009, 3010}));
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({7, 40'000, 40'001}));
  EXPECT_EQ((Counts{0, 0, 0}), missingOf({1000, 900, 901})) << "too late to be of that row";
}

TEST(RtpSequence, BeginsAnewWithAnotherSender) {
  RtpSequence sequence;
  EXPECT_EQ(0U, sequence.missingBefore({12, 0, 7, 1}));
  EXPECT_EQ(0U, sequence.missingBefore({12, 0, 10, 2}));
  EXPECT_EQ(0U, sequence.missingBefore({12, 0, 9, 3})) << "none is late of another's";
  EXPECT_EQ(0U, sequence.missingBefore({12, 0, 10, 3}));
}

}  // namespace
}  // namespace tevra::tools
