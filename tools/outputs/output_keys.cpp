#include "tools/outputs/output_keys.h"

#include <algorithm>
#include <array>
#include <limits>

namespace tevra::tools {
namespace {

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

constexpr std::array<NumberKey, 8> kNumberKeys = {{
    {"service", 0, 0xFFFF, [](OutputDraft& draft, int32_t value) { draft.service = value; }},
    {"gsid", kLowest, kHighest,
     [](OutputDraft& draft, int32_t value) { draft.output.globalSid = value; }},
    {"sid", 0, 0xFFFF, [](OutputDraft& draft, int32_t value) { draft.output.outputSid = value; }},
    {"tsid", 0, 0xFFFF,
     [](OutputDraft& draft, int32_t value) { draft.output.transportStreamId = value; }},
    {"onid", 0, 0xFFFF,
     [](OutputDraft& draft, int32_t value) { draft.output.originalNetworkId = value; }},
    {"next-node", kLowest, kHighest,
     [](OutputDraft& draft, int32_t value) { draft.output.nextNode = value; }},
    {"output-param", kLowest, kHighest,
     [](OutputDraft& draft, int32_t value) { draft.output.outputParam = value; }},
    {"usid", kLowest, kHighest,
     [](OutputDraft& draft, int32_t value) { draft.output.uniqueSid = value; }},
}};

}  // namespace

std::string NumberKey::range() const {
  return std::to_string(lowest) + " to " + std::to_string(highest);
}

const NumberKey* findNumberKey(const std::string& name) {
  const auto* found = std::find_if(kNumberKeys.begin(), kNumberKeys.end(),
                                   [&](const NumberKey& key) { return key.name == name; });
  return found == kNumberKeys.end() ? nullptr : found;
}

std::string outputKeys() {
  return "service, gsid, sid, name, tsid, onid, audio, next-node, output-param, last-node, usid, "
         "listed-node";
}

}  // namespace tevra::tools
