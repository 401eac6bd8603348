#include "tools/descriptors/stream_names.h"

#include <algorithm>

#include "tools/descriptors/code_names.h"
#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/name_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kPrivatePes = 0x06;

/** By the tag of the descriptor that tells it; the first that the stream has counts. */
constexpr std::array<NamedCode, 10> kPrivateContents = {{
    {0x46, "VBI teletext"},
    {0x56, "teletext"},
    {0x59, "DVB subtitles"},
    {0x6A, "AC-3 audio"},
    {0x7A, "E-AC-3 audio"},
    {0x7B, "DTS audio"},
    {0x7C, "AAC audio"},
    {0x81, "AC-3 audio (ATSC)"},
    {0x45, "VBI data"},
    {0x66, "data broadcast"},
}};

}  // namespace

std::string streamName(const PMTES& stream) {
  const auto* content =
      std::find_if(kPrivateContents.begin(), kPrivateContents.end(), [&](const NamedCode& entry) {
        return stream.streamType == kPrivatePes &&
               firstWithTag(stream.descriptors, entry.code) != nullptr;
      });
  if (content != kPrivateContents.end()) {
    return content->name;
  }
  const std::string name = streamTypeName(stream.streamType);
  return name.empty() ? "stream type " + hex(stream.streamType, 2) : name;
}

}  // namespace tevra::tools
