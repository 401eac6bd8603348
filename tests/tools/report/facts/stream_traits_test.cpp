#include "tools/report/facts/stream_traits.h"

#include <gmock/gmock.h>

namespace tevra::tools::report {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

Descriptor descriptor(int tag, const std::string& data) {
  Descriptor record;
  record.tag = tag;
  record.data = data;
  return record;
}

PMTES stream(int type, std::vector<Descriptor> descriptors = {}) {
  PMTES record;
  record.streamType = type;
  record.descriptors = std::move(descriptors);
  return record;
}

TEST(StreamTraits, TellKindsByTypeOrDescriptor) {
  const std::vector<std::tuple<PMTES, StreamKind, std::string>> cases = {
      {stream(0x02), StreamKind::kVideo, "MPEG-2 video"},
      {stream(0x1B), StreamKind::kVideo, "AVC video"},
      {stream(0x24), StreamKind::kVideo, "HEVC video"},
      {stream(0x04), StreamKind::kAudio, "MPEG-2 audio"},
      {stream(0x06, {descriptor(0x6A, "x")}), StreamKind::kAudio, "AC-3 audio"},
      {stream(0x06, {descriptor(0x59, "")}), StreamKind::kSubtitles, "DVB subtitles"},
      {stream(0x06, {descriptor(0x56, "")}), StreamKind::kSubtitles, "teletext"},
      {stream(0x06), StreamKind::kData, "private PES"},
      {stream(0x0B), StreamKind::kData, "DSM-CC type B"},
      {stream(0xEE), StreamKind::kData, "stream type 0xEE"},
      {stream(0x02, {descriptor(0x6A, "x")}), StreamKind::kVideo, "MPEG-2 video"},
  };
  for (const auto& [record, kind, description] : cases) {
    const StreamTraits traits = traitsOf(record);
    EXPECT_EQ(kind, traits.kind) << description;
    EXPECT_EQ(description, traits.description);
  }
}

TEST(StreamTraits, TakeLanguagesFromWhereverTheyStandThoseOfTextsOnce) {
  const Descriptor spoken = descriptor(0x0A, std::string("spa\0ita\0", 8));
  const Descriptor teletext =
      descriptor(0x56, std::string("ita\x09\x00", 5) + "eng\x10\x01" + "eng\x10\x02");
  EXPECT_THAT(traitsOf(stream(0x06, {teletext, spoken})).languages,
              ElementsAre("spa", "ita", "eng"));
  EXPECT_THAT(traitsOf(stream(0x1B)).languages, IsEmpty());
}

TEST(StreamTraits, NameReservedPids) {
  EXPECT_EQ("PAT", reservedPidName(0));
  EXPECT_EQ("TDT, TOT", reservedPidName(0x14));
  EXPECT_EQ("", reservedPidName(0x20));
}

}  // namespace
}  // namespace tevra::tools::report
