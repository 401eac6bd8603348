#include "tools/outputs/out_argument.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <set>
#include <utility>
#include <vector>

#include "tools/text/tool_error.h"

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

/** One argument on its way into a draft. */
class OutArgument {
 public:
  OutArgument(const std::string& text, OutputDraft defaults) : draft_(std::move(defaults)) {
    draft_.origin = "--out '" + text + "'";
    for (const std::string& item : items(text)) {
      take(item);
    }
  }

  [[nodiscard]] const OutputDraft& draft() const { return draft_; }

 private:
  [[noreturn]] void fail(const std::string& problem) const {
    throw UsageError(draft_.origin + ": " + problem);
  }

  [[nodiscard]] std::vector<std::string> items(const std::string& text) const;
  void take(const std::string& item);
  void set(const std::string& key, const std::string& value);
  [[nodiscard]] int32_t number(const NumberKey& key, const std::string& value) const;
  void setAudio(const std::string& value);
  void setLastNode(const std::string& value);
  void addListedNode(const std::string& value);

  OutputDraft draft_;
  std::set<std::string> seen_;
};

/** The parts between commas, without the backslashes. */
std::vector<std::string> OutArgument::items(const std::string& text) const {
  std::vector<std::string> items(1);
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == kSeparator) {
      items.emplace_back();
      continue;
    }
    if (text[i] == kEscape) {
      ++i;
      if (i == text.size() || (text[i] != kSeparator && text[i] != kEscape)) {
        fail("a backslash stands only before a comma or another backslash");
      }
    }
    items.back() += text[i];
  }
  return items;
}

void OutArgument::take(const std::string& item) {
  const size_t equals = item.find('=');
  if (equals == std::string::npos) {
    fail("'" + item + "' is not KEY=VALUE; in a value a comma stands behind a backslash");
  }
  const std::string key = item.substr(0, equals);
  const bool isFirst = seen_.insert(key).second;
  if (key == "listed-node") {
    if (isFirst) {
      draft_.output.listedNodes.clear();  // those of the single options
    }
  } else if (!isFirst) {
    fail("'" + key + "' is given twice");
  }
  set(key, item.substr(equals + 1));
}

void OutArgument::set(const std::string& key, const std::string& value) {
  const auto* found = std::find_if(kNumberKeys.begin(), kNumberKeys.end(),
                                   [&](const NumberKey& number) { return number.name == key; });
  if (found != kNumberKeys.end()) {
    found->set(draft_, number(*found, value));
  } else if (key == "name") {
    draft_.output.name = value;
  } else if (key == "audio") {
    setAudio(value);
  } else if (key == "last-node") {
    setLastNode(value);
  } else if (key == "listed-node") {
    addListedNode(value);
  } else {
    fail("unknown key '" + key + "'; the keys are " + kOutputKeys);
  }
}

int32_t OutArgument::number(const NumberKey& key, const std::string& value) const {
  const bool isHex = value.compare(0, 2, "0x") == 0 || value.compare(0, 2, "0X") == 0;
  const char* begin = value.data() + (isHex ? 2 : 0);
  const char* end = value.data() + value.size();
  int64_t number = 0;
  const auto [stop, error] = std::from_chars(begin, end, number, isHex ? 16 : 10);
  if (stop != end || error == std::errc::invalid_argument || (isHex && *begin == '-')) {
    fail(std::string(key.name) + " needs a whole number, not '" + value + "'");
  }
  if (error == std::errc::result_out_of_range || number < key.lowest || number > key.highest) {
    fail(std::string(key.name) + " " + value + " is out of range, " + std::to_string(key.lowest) +
         " to " + std::to_string(key.highest));
  }
  return static_cast<int32_t>(number);
}

void OutArgument::setAudio(const std::string& value) {
  draft_.output.audio = parseLanguages(value);
  if (!draft_.output.audio) {
    fail("audio needs three-letter language codes with + between them, or none, not '" + value +
         "'");
  }
}

void OutArgument::setLastNode(const std::string& value) {
  const std::optional<LastNode> lastNode = parseLastNode(value);
  if (!lastNode) {
    fail("last-node is direct, listed or none, not '" + value + "'");
  }
  draft_.output.lastNode = *lastNode;
}

void OutArgument::addListedNode(const std::string& value) {
  const std::optional<ListedNode> node = parseListedNode(value);
  if (!node) {
    fail("listed-node is GSID[:USID[:LANGUAGES]] with + between languages, not '" + value + "'");
  }
  draft_.output.listedNodes.push_back(*node);
}

}  // namespace

OutputDraft parseOutArgument(const std::string& text, const OutputDraft& defaults) {
  return OutArgument(text, defaults).draft();
}

}  // namespace tevra::tools
