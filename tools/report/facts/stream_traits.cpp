#include "tools/report/facts/stream_traits.h"

#include <algorithm>
#include <array>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptors.h"
#include "tools/descriptors/name_table.h"
#include "tools/si/section_reader.h"
#include "tools/text/dvb_text.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

constexpr int kPrivatePes = 0x06;
constexpr int kCaTag = 0x09;
constexpr int kVbiTeletextTag = 0x46;
constexpr int kTeletextTag = 0x56;
constexpr int kSubtitlingTag = 0x59;
constexpr size_t kLanguageSize = 3;
constexpr size_t kTeletextEntrySize = 5;
constexpr size_t kSubtitlingEntrySize = 8;

constexpr std::array<int, 12> kVideoTypes = {0x01, 0x02, 0x10, 0x1B, 0x1E, 0x1F,
                                             0x20, 0x21, 0x24, 0x25, 0x33, 0x34};

/** What tells the contents of a private PES stream. */
struct PrivateContent {
  int tag;
  StreamKind kind;
  const char* description;
};
constexpr std::array<PrivateContent, 11> kPrivateContents = {{
    {kVbiTeletextTag, StreamKind::kSubtitles, "VBI teletext"},
    {kTeletextTag, StreamKind::kSubtitles, "teletext"},
    {kSubtitlingTag, StreamKind::kSubtitles, "DVB subtitles"},
    {0x6A, StreamKind::kAudio, "AC-3 audio"},
    {0x7A, StreamKind::kAudio, "E-AC-3 audio"},
    {0x7B, StreamKind::kAudio, "DTS audio"},
    {0x7C, StreamKind::kAudio, "AAC audio"},
    {0x81, StreamKind::kAudio, "AC-3 audio (ATSC)"},
    {0x45, StreamKind::kData, "VBI data"},
    {0x0D, StreamKind::kData, "private PES"},
    {0x66, StreamKind::kData, "data broadcast"},
}};

bool hasTag(const std::vector<Descriptor>& descriptors, int tag) {
  return std::any_of(descriptors.begin(), descriptors.end(),
                     [tag](const Descriptor& descriptor) { return descriptor.tag == tag; });
}

const PrivateContent* privateContent(const PMTES& stream) {
  const auto* found =
      std::find_if(kPrivateContents.begin(), kPrivateContents.end(), [&](const auto& content) {
        return stream.streamType == kPrivatePes && hasTag(stream.descriptors, content.tag);
      });
  return found == kPrivateContents.end() ? nullptr : found;
}

void addLanguages(const std::vector<Descriptor>& descriptors, int tag, size_t entrySize,
                  std::vector<std::string>& codes) {
  for (const Descriptor& descriptor : descriptors) {
    for (size_t at = 0; descriptor.tag == tag && at + entrySize <= descriptor.data.size();
         at += entrySize) {
      const std::string code = printable(descriptor.data.substr(at, kLanguageSize));
      if (std::find(codes.begin(), codes.end(), code) == codes.end()) {
        codes.push_back(code);
      }
    }
  }
}

StreamKind kindOf(const PMTES& stream) {
  if (std::find(kVideoTypes.begin(), kVideoTypes.end(), stream.streamType) != kVideoTypes.end()) {
    return StreamKind::kVideo;
  }
  return isAudio(stream) ? StreamKind::kAudio : StreamKind::kData;
}

std::string typeText(int streamType) {
  const std::string name = streamTypeName(streamType);
  return name.empty() ? "stream type " + hex(streamType, 2) : name;
}

}  // namespace

StreamTraits traitsOf(const PMTES& stream) {
  StreamTraits traits;
  if (const PrivateContent* content = privateContent(stream)) {
    traits.kind = content->kind;
    traits.description = content->description;
  } else {
    traits.kind = kindOf(stream);
    traits.description = typeText(stream.streamType);
  }
  traits.languages = languages(stream.descriptors);
  addLanguages(stream.descriptors, kVbiTeletextTag, kTeletextEntrySize, traits.languages);
  addLanguages(stream.descriptors, kTeletextTag, kTeletextEntrySize, traits.languages);
  addLanguages(stream.descriptors, kSubtitlingTag, kSubtitlingEntrySize, traits.languages);
  return traits;
}

std::vector<CaReference> caReferences(const std::vector<Descriptor>& descriptors) {
  std::vector<CaReference> references;
  for (const Descriptor& descriptor : descriptors) {
    if (descriptor.tag == kCaTag && descriptor.data.size() >= 4) {
      const auto* bytes = reinterpret_cast<const uint8_t*>(descriptor.data.data());
      SectionReader reader(bytes, bytes + descriptor.data.size());
      references.push_back({reader.word(), reader.pid()});
    }
  }
  return references;
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
