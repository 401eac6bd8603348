#include "tools/outputs/request_file.h"

#include <utility>

#include "tools/outputs/output_keys.h"
#include "tools/outputs/strict_json.h"
#include "tools/stream/files.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using Json = nlohmann::json;

constexpr const char* kOutputs = "outputs";
/** What is wrong may quote the request, which can be long. */
constexpr size_t kLongestProblem = 300;

/** A value and the way to it: "outputs[1].sid". */
struct Place {
  const Json& value;
  std::string path;

  [[nodiscard]] Place member(const std::string& key) const {
    return {value.at(key), path.empty() ? key : path + "." + key};
  }
  [[nodiscard]] Place element(size_t index) const {
    return {value.at(index), path + "[" + std::to_string(index) + "]"};
  }
};

/** "a string", "an object", "null". */
std::string typeOf(const Json& value) {
  std::string name = value.type_name();
  if (value.is_null()) {
    return name;
  }
  return (value.is_structured() ? "an " : "a ") + name;
}

/** One request on its way into drafts. */
class Request {
 public:
  explicit Request(std::string name) : name_(std::move(name)) {}

  [[nodiscard]] std::vector<OutputDraft> read(const std::string& text,
                                              const OutputDraft& defaults) const;

 private:
  [[noreturn]] void fail(const std::string& problem) const {
    const bool isLong = problem.size() > kLongestProblem;
    throw UsageError("--request " + name_ + ": " + problem.substr(0, kLongestProblem) +
                     (isLong ? "..." : ""));
  }
  [[noreturn]] void failAt(const Place& place, const std::string& problem) const {
    fail((place.path.empty() ? "the request" : place.path) + " " + problem);
  }

  [[nodiscard]] Json parse(const std::string& text) const;
  [[nodiscard]] std::vector<OutputDraft> readOutputs(const Place& list,
                                                     const OutputDraft& defaults) const;
  void readMember(const Place& member, const std::string& key, OutputDraft& draft) const;
  [[nodiscard]] int32_t number(const Place& place, const NumberKey& key) const;
  [[nodiscard]] std::string text(const Place& place) const;
  [[nodiscard]] std::vector<std::string> audio(const Place& place) const;
  [[nodiscard]] LastNode lastNode(const Place& place) const;
  [[nodiscard]] std::vector<ListedNode> listedNodes(const Place& place) const;
  [[nodiscard]] ListedNode listedNode(const Place& place) const;

  std::string name_;
};

Json Request::parse(const std::string& text) const {
  try {
    return parseStrictJson(text);
  } catch (const StrictJsonError& error) {
    fail(error.what());
  }
}

std::vector<OutputDraft> Request::read(const std::string& text, const OutputDraft& defaults) const {
  const Json json = parse(text);
  const Place root = {json, ""};
  if (json.is_array()) {
    return readOutputs(root, defaults);
  }
  if (!json.is_object()) {
    fail("a request is an array of outputs, or an object with one as \"outputs\"");
  }
  if (!json.contains(kOutputs)) {
    fail("there is no \"outputs\", the array of outputs");
  }
  OutputDraft shared = defaults;
  for (const auto& [key, value] : json.items()) {
    if (key != kOutputs) {
      readMember(root.member(key), key, shared);
    }
  }
  return readOutputs(root.member(kOutputs), shared);
}

std::vector<OutputDraft> Request::readOutputs(const Place& list,
                                              const OutputDraft& defaults) const {
  if (!list.value.is_array()) {
    failAt(list, "is not an array of outputs");
  }
  if (list.value.empty()) {
    failAt(list, "is empty: describe at least one output");
  }
  std::vector<OutputDraft> drafts;
  for (size_t index = 0; index < list.value.size(); ++index) {
    const Place place = list.element(index);
    if (!place.value.is_object()) {
      failAt(place, "is not an object that describes an output");
    }
    OutputDraft& draft = drafts.emplace_back(defaults);
    draft.origin = "--request " + name_ + ": " + place.path;
    for (const auto& [key, value] : place.value.items()) {
      readMember(place.member(key), key, draft);
    }
  }
  return drafts;
}

void Request::readMember(const Place& member, const std::string& key, OutputDraft& draft) const {
  if (const NumberKey* found = findNumberKey(key)) {
    found->set(draft, number(member, *found));
  } else if (key == "name") {
    draft.output.name = text(member);
  } else if (key == "audio") {
    draft.output.audio = audio(member);
  } else if (key == "last-node") {
    draft.output.lastNode = lastNode(member);
  } else if (key == "listed-node") {
    draft.output.listedNodes = listedNodes(member);
  } else {
    failAt(member, "is unknown; the members are " + outputKeys());
  }
}

int32_t Request::number(const Place& place, const NumberKey& key) const {
  if (place.value.is_number_float()) {
    failAt(place, "needs a whole number, " + key.range() + ", not " + place.value.dump());
  }
  if (!place.value.is_number()) {
    failAt(place, "needs a number, not " + typeOf(place.value));
  }
  const bool isHuge = place.value.is_number_unsigned() && place.value.get<uint64_t>() > INT64_MAX;
  if (isHuge || !key.takes(place.value.get<int64_t>())) {
    failAt(place, place.value.dump() + " is out of range, " + key.range());
  }
  return place.value.get<int32_t>();
}

std::string Request::text(const Place& place) const {
  if (!place.value.is_string()) {
    failAt(place, "needs a text, not " + typeOf(place.value));
  }
  return place.value.get<std::string>();
}

std::vector<std::string> Request::audio(const Place& place) const {
  if (place.value.is_string()) {
    const auto languages = parseLanguages(text(place));
    if (!languages) {
      failAt(place, "needs three-letter language codes, not '" + text(place) + "'");
    }
    return *languages;
  }
  if (!place.value.is_array()) {
    failAt(place, "needs an array of language codes, not " + typeOf(place.value));
  }
  std::vector<std::string> languages;
  for (size_t index = 0; index < place.value.size(); ++index) {
    const Place element = place.element(index);
    languages.push_back(text(element));
    if (!isLanguageCode(languages.back())) {
      failAt(element, "is no three-letter language code: '" + languages.back() + "'");
    }
  }
  return languages;
}

LastNode Request::lastNode(const Place& place) const {
  const std::optional<LastNode> lastNode = parseLastNode(text(place));
  if (!lastNode) {
    failAt(place, "is direct, listed or none, not '" + text(place) + "'");
  }
  return *lastNode;
}

std::vector<ListedNode> Request::listedNodes(const Place& place) const {
  if (!place.value.is_array()) {
    failAt(place, "needs an array of nodes, not " + typeOf(place.value));
  }
  std::vector<ListedNode> nodes;
  for (size_t index = 0; index < place.value.size(); ++index) {
    nodes.push_back(listedNode(place.element(index)));
  }
  return nodes;
}

ListedNode Request::listedNode(const Place& place) const {
  if (!place.value.is_object() || !place.value.contains("gsid")) {
    failAt(place, "needs an object with gsid");
  }
  ListedNode node;
  node.globalSid = number(place.member("gsid"), *findNumberKey("gsid"));
  node.uniqueSid = node.globalSid;
  for (const auto& [key, value] : place.value.items()) {
    const Place member = place.member(key);
    if (key == "usid") {
      node.uniqueSid = number(member, *findNumberKey("usid"));
    } else if (key == "audio") {
      node.audio = audio(member);
    } else if (key != "gsid") {
      failAt(member, "is unknown; the members are gsid, usid, audio");
    }
  }
  return node;
}

/** One byte more than what is taken shows that there is too much. */
std::string readLimited(const std::string& path) {
  InputFile file(path);
  std::string text(kLargestRequest + 1, '\0');
  size_t size = 0;
  while (size < text.size()) {
    const size_t count =
        file.read(reinterpret_cast<uint8_t*>(text.data()) + size, text.size() - size);
    if (count == 0) {
      break;
    }
    size += count;
  }
  text.resize(size);
  return text;
}

}  // namespace

std::vector<OutputDraft> parseRequest(const std::string& json, const std::string& name,
                                      const OutputDraft& defaults) {
  return Request(name).read(json, defaults);
}

std::vector<OutputDraft> readRequest(const std::string& path, const OutputDraft& defaults) {
  const std::string text = readLimited(path);
  if (text.size() > kLargestRequest) {
    throw UsageError("--request " + path + ": larger than " + std::to_string(kLargestRequest) +
                     " bytes: ask in several requests");
  }
  return parseRequest(text, path, defaults);
}

}  // namespace tevra::tools
