#include "tools/descriptors/descriptor_values.h"

#include <algorithm>
#include <array>

#include "tools/text/dvb_text.h"

namespace tevra::tools {
namespace {

constexpr int kIso639LanguageTag = 0x0A;
constexpr int kServiceTag = 0x48;
constexpr int kPrivatePes = 0x06;
constexpr size_t kLanguageEntrySize = 4;

constexpr std::array<int, 4> kAudioTypes = {0x03, 0x04, 0x0F, 0x11};
/** AC-3, enhanced AC-3, DTS, AAC (EN 300 468, 6.1) and ATSC's AC-3. */
constexpr std::array<int, 5> kAudioTags = {0x6A, 0x7A, 0x7B, 0x7C, 0x81};

template <class Container>
bool contains(const Container& values, int value) {
  return std::find(values.begin(), values.end(), value) != values.end();
}

/** The text behind the length byte at `offset`; nothing beyond the payload. */
std::string textAt(const std::string& payload, size_t offset) {
  if (offset >= payload.size()) {
    return {};
  }
  return payload.substr(offset + 1, static_cast<unsigned char>(payload[offset]));
}

}  // namespace

ServiceNames serviceNames(const std::vector<Descriptor>& descriptors) {
  const auto found =
      std::find_if(descriptors.begin(), descriptors.end(),
                   [](const Descriptor& descriptor) { return descriptor.tag == kServiceTag; });
  if (found == descriptors.end() || found->data.size() < 3) {
    return {};
  }
  const std::string& payload = found->data;
  const std::string provider = textAt(payload, 1);
  ServiceNames names;
  names.type = static_cast<unsigned char>(payload[0]);
  names.provider = utf8FromDvbText(provider);
  names.name = utf8FromDvbText(textAt(payload, 2 + provider.size()));
  return names;
}

std::vector<std::string> languages(const std::vector<Descriptor>& descriptors) {
  std::vector<std::string> codes;
  for (const Descriptor& descriptor : descriptors) {
    if (descriptor.tag != kIso639LanguageTag) {
      continue;
    }
    for (size_t i = 0; i + kLanguageEntrySize <= descriptor.data.size(); i += kLanguageEntrySize) {
      codes.push_back(printable(descriptor.data.substr(i, 3)));
    }
  }
  return codes;
}

bool isAudio(const PMTES& stream) {
  return contains(kAudioTypes, stream.streamType) ||
         (stream.streamType == kPrivatePes &&
          std::any_of(
              stream.descriptors.begin(), stream.descriptors.end(),
              [](const Descriptor& descriptor) { return contains(kAudioTags, descriptor.tag); }));
}

}  // namespace tevra::tools
