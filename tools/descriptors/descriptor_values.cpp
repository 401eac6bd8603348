#include "tools/descriptors/descriptor_values.h"

#include <algorithm>
#include <array>

#include "tools/descriptors/field_reader.h"
#include "tools/text/dvb_text.h"

namespace tevra::tools {
namespace {

constexpr int kCaTag = 0x09;
constexpr int kIso639LanguageTag = 0x0A;
constexpr int kNetworkNameTag = 0x40;
constexpr int kVbiTeletextTag = 0x46;
constexpr int kServiceTag = 0x48;
constexpr int kShortEventTag = 0x4D;
constexpr int kTeletextTag = 0x56;
constexpr int kSubtitlingTag = 0x59;

constexpr size_t kLanguageSize = 3;
constexpr size_t kIso639EntrySize = 4;
constexpr size_t kTeletextEntrySize = 5;
constexpr size_t kSubtitlingEntrySize = 8;

constexpr int kPrivatePes = 0x06;
/** MPEG audio, AAC, MPEG-H and ATSC's (enhanced) AC-3. */
constexpr std::array<int, 8> kAudioTypes = {0x03, 0x04, 0x0F, 0x11, 0x1C, 0x2D, 0x81, 0x87};
/** AC-3, enhanced AC-3, DTS, AAC (EN 300 468, 6.1) and ATSC's AC-3. */
constexpr std::array<int, 5> kAudioTags = {0x6A, 0x7A, 0x7B, 0x7C, 0x81};

/** The text behind the length byte at `offset`; nothing beyond the payload. */
std::string textAt(const std::string& payload, size_t offset) {
  if (offset >= payload.size()) {
    return {};
  }
  return payload.substr(offset + 1, static_cast<unsigned char>(payload[offset]));
}

/** Adds the codes that the entries of all descriptors with the tag begin with. */
void addLanguages(const std::vector<Descriptor>& descriptors, int tag, size_t entrySize,
                  std::vector<std::string>& codes) {
  for (const Descriptor& descriptor : descriptors) {
    for (size_t at = 0; descriptor.tag == tag && at + entrySize <= descriptor.data.size();
         at += entrySize) {
      codes.push_back(printable(descriptor.data.substr(at, kLanguageSize)));
    }
  }
}

}  // namespace

const Descriptor* firstWithTag(const std::vector<Descriptor>& descriptors, int tag) {
  const auto found =
      std::find_if(descriptors.begin(), descriptors.end(),
                   [tag](const Descriptor& descriptor) { return descriptor.tag == tag; });
  return found == descriptors.end() ? nullptr : &*found;
}

ServiceNames serviceNames(const std::vector<Descriptor>& descriptors) {
  const Descriptor* descriptor = firstWithTag(descriptors, kServiceTag);
  if (descriptor == nullptr || descriptor->data.size() < 3) {
    return {};
  }
  const std::string& payload = descriptor->data;
  const std::string provider = textAt(payload, 1);
  return {static_cast<unsigned char>(payload[0]), utf8FromDvbText(provider),
          utf8FromDvbText(textAt(payload, 2 + provider.size()))};
}

std::string networkName(const std::vector<Descriptor>& descriptors) {
  const Descriptor* descriptor = firstWithTag(descriptors, kNetworkNameTag);
  return descriptor == nullptr ? std::string() : utf8FromDvbText(descriptor->data);
}

std::string eventName(const std::vector<Descriptor>& descriptors) {
  const Descriptor* descriptor = firstWithTag(descriptors, kShortEventTag);
  return descriptor == nullptr ? std::string()
                               : utf8FromDvbText(textAt(descriptor->data, kLanguageSize));
}

std::vector<std::string> languages(const std::vector<Descriptor>& descriptors) {
  std::vector<std::string> codes;
  addLanguages(descriptors, kIso639LanguageTag, kIso639EntrySize, codes);
  return codes;
}

std::vector<std::string> textLanguages(const std::vector<Descriptor>& descriptors) {
  std::vector<std::string> codes;
  addLanguages(descriptors, kVbiTeletextTag, kTeletextEntrySize, codes);
  addLanguages(descriptors, kTeletextTag, kTeletextEntrySize, codes);
  addLanguages(descriptors, kSubtitlingTag, kSubtitlingEntrySize, codes);
  return codes;
}

std::vector<CaReference> caReferences(const std::vector<Descriptor>& descriptors) {
  std::vector<CaReference> references;
  for (const Descriptor& descriptor : descriptors) {
    if (descriptor.tag == kCaTag && descriptor.data.size() >= 4) {
      FieldReader in(descriptor.data);
      const auto systemId = static_cast<int>(in.bits(16));
      references.push_back({systemId, static_cast<int>(in.bits(16) & 0x1FFF)});
    }
  }
  return references;
}

bool isAudio(const PMTES& stream) {
  const auto hasTag = [&](int tag) { return firstWithTag(stream.descriptors, tag) != nullptr; };
  return std::count(kAudioTypes.begin(), kAudioTypes.end(), stream.streamType) != 0 ||
         (stream.streamType == kPrivatePes &&
          std::any_of(kAudioTags.begin(), kAudioTags.end(), hasTag));
}

}  // namespace tevra::tools
