#include "tools/outputs/out_argument.h"

#include <algorithm>
#include <array>
#include <limits>
#include <optional>
#include <set>
#include <vector>

#include "tools/text/dvb_text.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr char kEscape = '\\';
constexpr char kSeparator = ',';

constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();

/** A key whose value is a whole number. */
struct NumberKey {
  const char* name;
  int32_t lowest;
  int32_t highest;
  void (*set)(OutputDraft& draft, int32_t value);
};

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

[[noreturn]] void fail(const OutputDraft& draft, const std::string& problem) {
  throw UsageError(draft.origin + ": " + problem);
}

/** The parts between commas, without the backslashes. */
std::vector<std::string> items(const OutputDraft& draft, const std::string& text) {
  std::vector<std::string> parts(1);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kSeparator) {
      parts.emplace_back();
      continue;
    }
    if (text[i] == kEscape) {
      ++i;
      if (i == text.size() || (text[i] != kSeparator && text[i] != kEscape)) {
        fail(draft, "a backslash stands only before a comma or another backslash");
      }
    }
    parts.back() += text[i];
  }
  return parts;
}

int32_t number(const OutputDraft& draft, const NumberKey& key, const std::string& value) {
  const std::optional<int64_t> result = wholeNumber(value);
  if (!result) {
    fail(draft, std::string(key.name) + " needs a whole number, not '" + value + "'");
  }
  if (*result < key.lowest || *result > key.highest) {
    fail(draft, std::string(key.name) + " " + value + " is out of range, " +
                    std::to_string(key.lowest) + " to " + std::to_string(key.highest));
  }
  return static_cast<int32_t>(*result);
}

/** What was read of the value; raises UsageError where that is nothing. */
template <class Value>
Value orFail(const std::optional<Value>& read, const OutputDraft& draft, const std::string& rule,
             const std::string& value) {
  if (!read) {
    fail(draft, rule + ", not '" + value + "'");
  }
  return *read;
}

void set(OutputDraft& draft, const std::string& key, const std::string& value) {
  const auto* found = std::find_if(kNumberKeys.begin(), kNumberKeys.end(),
                                   [&](const NumberKey& entry) { return entry.name == key; });
  if (found != kNumberKeys.end()) {
    found->set(draft, number(draft, *found, value));
  } else if (key == "name") {
    if (!isUtf8(value)) {
      fail(draft, "name is not UTF-8: convert it, with iconv for one");
    }
    draft.output.name = value;
  } else if (key == "audio") {
    draft.output.audio =
        orFail(parseLanguages(value), draft,
               "audio needs three-letter language codes with + between them, or none", value);
  } else if (key == "last-node") {
    draft.output.lastNode =
        orFail(parseLastNode(value), draft, "last-node is direct, listed or none", value);
  } else if (key == "listed-node") {
    draft.output.listedNodes.push_back(
        orFail(parseListedNode(value), draft,
               "listed-node is GSID[:USID[:LANGUAGES]] with + between languages", value));
  } else {
    fail(draft, "unknown key '" + key + "'; the keys are " + kOutputKeys);
  }
}

}  // namespace

OutputDraft parseOutArgument(const std::string& text, const OutputDraft& defaults) {
  OutputDraft draft = defaults;
  draft.origin = "--out '" + text + "'";
  std::set<std::string> seen;
  for (const std::string& item : items(draft, text)) {
    const size_t equals = item.find('=');
    if (equals == std::string::npos) {
      fail(draft, "'" + item + "' is not KEY=VALUE; in a value a comma stands behind a backslash");
    }
    const std::string key = item.substr(0, equals);
    const bool isFirst = seen.insert(key).second;
    if (!isFirst && key != "listed-node") {
      fail(draft, "'" + key + "' is given twice");
    }
    if (isFirst && key == "listed-node") {
      draft.output.listedNodes.clear();  // those of the single options
    }
    set(draft, key, item.substr(equals + 1));
  }
  return draft;
}

}  // namespace tevra::tools
