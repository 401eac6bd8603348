#include "tools/report/facts/stream_traits.h"

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"

namespace tevra::tools::report {
namespace {

using test::descriptorRecord;
using test::streamRecord;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(StreamTraits, TellKindsByTypeOrDescriptor) {
  const std::vector<std::tuple<PMTES, StreamKind, std::string>> cases = {
      {streamRecord(0x02, 512), StreamKind::kVideo, "MPEG-2 video"},
      {streamRecord(0x1B, 512), StreamKind::kVideo, "AVC video"},
      {streamRecord(0x24, 512), StreamKind::kVideo, "HEVC video"},
      {streamRecord(0x04, 512), StreamKind::kAudio, "MPEG-2 audio"},
      {streamRecord(0x06, 512, {descriptorRecord(0x6A, "x")}), StreamKind::kAudio, "AC-3 audio"},
      {streamRecord(0x06, 512, {descriptorRecord(0x59, "")}), StreamKind::kSubtitles,
       "DVB subtitles"},
      {streamRecord(0x06, 512, {descriptorRecord(0x56, "")}), StreamKind::kSubtitles, "teletext"},
      {streamRecord(0x06, 512, {descriptorRecord(0x66, "")}), StreamKind::kData, "data broadcast"},
      {streamRecord(0x06, 512), StreamKind::kData, "private PES"},
      {streamRecord(0x81, 512), StreamKind::kAudio, "AC-3 audio (ATSC)"},
      {streamRecord(0x35, 512), StreamKind::kVideo, "EVC video"},
      {streamRecord(0x0B, 512), StreamKind::kData, "DSM-CC type B"},
      {streamRecord(0xEE, 512), StreamKind::kData, "stream type 0xEE"},
      {streamRecord(0x02, 512, {descriptorRecord(0x6A, "x")}), StreamKind::kVideo, "MPEG-2 video"},
  };
  for (const auto& [record, kind, description] : cases) {
    const StreamTraits traits = traitsOf(record);
    EXPECT_EQ(kind, traits.kind) << description;
    EXPECT_EQ(description, traits.description);
  }
}

TEST(StreamTraits, TakeLanguagesFromWhereverTheyStandThoseOfTextsOnce) {
  const Descriptor spoken = descriptorRecord(0x0A, std::string("spa\0ita\0", 8));
  const Descriptor teletext =
      descriptorRecord(0x56, std::string("ita\x09\x00", 5) + "eng\x10\x01" + "eng\x10\x02");
  EXPECT_THAT(traitsOf(streamRecord(0x06, 512, {teletext, spoken})).languages,
              ElementsAre("spa", "ita", "eng"));
  EXPECT_THAT(traitsOf(streamRecord(0x1B, 512)).languages, IsEmpty());
}

TEST(StreamTraits, NameReservedPids) {
  EXPECT_EQ("PAT", reservedPidName(0));
  EXPECT_EQ("TDT, TOT", reservedPidName(0x14));
  EXPECT_EQ("", reservedPidName(0x20));
}

}  // namespace
}  // namespace tevra::tools::report
