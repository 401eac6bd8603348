#include "tools/outputs/carriage.h"

#include <algorithm>
#include <array>

#include "tools/descriptors/descriptor_values.h"

namespace tevra::tools {
namespace {

constexpr int kMpeg1Audio = 0x03;
constexpr int kMpeg2Audio = 0x04;
constexpr int kPrivatePes = 0x06;
constexpr int kIso639LanguageTag = 0x0A;
constexpr size_t kIso639EntrySize = 4;
constexpr size_t kLanguageSize = 3;

constexpr std::array<int, 10> kCarriedTypes = {0x01, 0x02, 0x03, 0x04, 0x06,
                                               0x0F, 0x10, 0x11, 0x1B, 0x24};
/** AC-3, ATSC's, enhanced AC-3 and DTS, this by the tag that the daemon takes for it. */
constexpr std::array<int, 4> kFilteredTags = {0x6A, 0x81, 0x7A, 0x73};

}  // namespace

bool isCarried(int streamType) {
  return std::count(kCarriedTypes.begin(), kCarriedTypes.end(), streamType) != 0;
}

bool isFiltered(const PMTES& stream) {
  const auto hasTag = [&](int tag) { return firstWithTag(stream.descriptors, tag) != nullptr; };
  return stream.streamType == kMpeg1Audio || stream.streamType == kMpeg2Audio ||
         (stream.streamType == kPrivatePes &&
          std::any_of(kFilteredTags.begin(), kFilteredTags.end(), hasTag));
}

std::string filterLanguage(const PMTES& stream) {
  const auto last = std::find_if(
      stream.descriptors.rbegin(), stream.descriptors.rend(),
      [](const Descriptor& descriptor) { return descriptor.tag == kIso639LanguageTag; });
  const bool isLanguage = last != stream.descriptors.rend() && !last->data.empty() &&
                          last->data.size() % kIso639EntrySize == 0;
  return isLanguage ? last->data.substr(0, kLanguageSize) : kNoLanguage;
}

std::vector<std::string> filterLanguages(const PMT& pmt) {
  std::vector<std::string> languages;
  for (const PMTES& stream : pmt.esList) {
    if (isFiltered(stream) &&
        std::count(languages.begin(), languages.end(), filterLanguage(stream)) == 0) {
      languages.push_back(filterLanguage(stream));
    }
  }
  return languages;
}

}  // namespace tevra::tools
