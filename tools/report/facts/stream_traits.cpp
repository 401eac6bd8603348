#include "tools/report/facts/stream_traits.h"

#include <algorithm>
#include <array>

#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/name_table.h"
#include "tools/descriptors/stream_names.h"

namespace tevra::tools::report {
namespace {

constexpr int kPrivatePes = 0x06;

constexpr std::array<int, 24> kVideoTypes = {0x01, 0x02, 0x10, 0x1B, 0x1E, 0x1F, 0x20, 0x21,
                                             0x22, 0x23, 0x24, 0x25, 0x26, 0x28, 0x29, 0x2A,
                                             0x2B, 0x31, 0x32, 0x33, 0x34, 0x35, 0x80, 0xEA};

/** The descriptors of teletext and subtitles in a private PES stream. */
constexpr std::array<int, 3> kTextTags = {0x46, 0x56, 0x59};

StreamKind kindOf(const PMTES& stream) {
  if (std::find(kVideoTypes.begin(), kVideoTypes.end(), stream.streamType) != kVideoTypes.end()) {
    return StreamKind::kVideo;
  }
  if (stream.streamType == kPrivatePes &&
      std::any_of(kTextTags.begin(), kTextTags.end(),
                  [&](int tag) { return firstWithTag(stream.descriptors, tag) != nullptr; })) {
    return StreamKind::kSubtitles;
  }
  return isAudio(stream) ? StreamKind::kAudio : StreamKind::kData;
}

}  // namespace

StreamTraits traitsOf(const PMTES& stream) {
  StreamTraits traits = {kindOf(stream), streamName(stream), languages(stream.descriptors)};
  for (const std::string& code : textLanguages(stream.descriptors)) {
    if (std::count(traits.languages.begin(), traits.languages.end(), code) == 0) {
      traits.languages.push_back(code);
    }
  }
  return traits;
}

std::string reservedPidName(int pid) {
  static constexpr std::array<NamedCode, 15> kNames = {{
      {0x00, "PAT"},
      {0x01, "CAT"},
      {0x02, "TSDT"},
      {0x03, "IPMP"},
      {0x10, "NIT"},
      {0x11, "SDT, BAT"},
      {0x12, "EIT"},
      {0x13, "RST"},
      {0x14, "TDT, TOT"},
      {0x15, "synchronisation"},
      {0x16, "RNT"},
      {0x1C, "inband signalling"},
      {0x1D, "measurement"},
      {0x1E, "DIT"},
      {0x1F, "SIT"},
  }};
  return nameIn(kNames, pid);
}

std::string kindName(StreamKind kind) {
  static constexpr std::array<const char*, kStreamKinds> kNames = {
      "video",  "audio",       "subtitles, teletext", "data",
      "PSI/SI", "ECM and EMM", "unreferenced",        "stuffing"};
  return kNames.at(static_cast<size_t>(kind));
}

std::string kindWord(StreamKind kind) {
  static constexpr std::array<const char*, kStreamKinds> kWords = {
      "video", "audio", "subtitles", "data", "tables", "ca", "unreferenced", "stuffing"};
  return kWords.at(static_cast<size_t>(kind));
}

}  // namespace tevra::tools::report
