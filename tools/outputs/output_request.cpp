#include "tools/outputs/output_request.h"

#include <charconv>
#include <map>
#include <set>

#include "tools/outputs/language_codes.h"

namespace tevra::tools {
namespace {

constexpr size_t kLanguageCodeSize = 3;

std::vector<std::string> split(const std::string& text, const std::string& separators) {
  std::vector<std::string> parts;
  size_t start = 0;
  for (size_t end = 0; end != std::string::npos; start = end + 1) {
    end = text.find_first_of(separators, start);
    parts.push_back(text.substr(start, end == std::string::npos ? end : end - start));
  }
  return parts;
}

std::optional<int32_t> parseNumber(const std::string& text) {
  int32_t value = 0;
  const char* end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, value);
  if (error != std::errc() || stop != end) {
    return std::nullopt;
  }
  return value;
}

/** All forms of the languages, each once. */
std::vector<AudioLanguage> languagesToAskFor(const AudioFilter& audio,
                                             const std::vector<std::string>& streamCodes) {
  std::vector<AudioLanguage> languages;
  std::set<std::string> known;
  for (const std::string& language : audio.value_or(std::vector<std::string>{})) {
    for (const std::string& code : codesToAskFor(language, streamCodes)) {
      if (known.insert(code).second) {
        languages.emplace_back().language = code;
      }
    }
  }
  return languages;
}

LastNodeSettings makeNode(const ListedNode& from, const OutputOptions& output) {
  LastNodeSettings node;
  node.globalSID = from.globalSid;
  node.uniqueSID = from.uniqueSid;
  const AudioFilter& audio = from.audio ? from.audio : output.audio;
  node.audioFilter = audio ? 1 : 0;
  node.audioLanguages = languagesToAskFor(audio, output.streamLanguages);
  return node;
}

std::vector<LastNodeSettings> makeNodes(const OutputOptions& options) {
  const int32_t globalSid = options.resolvedGlobalSid();
  if (options.lastNode == LastNode::kDirect) {
    return {makeNode({globalSid, options.uniqueSid.value_or(globalSid), std::nullopt}, options)};
  }
  std::vector<LastNodeSettings> nodes;
  for (const ListedNode& listed : options.listedNodes) {
    nodes.push_back(makeNode(listed, options));
  }
  return nodes;
}

void addOutput(SrvOutputRequest& request, const OutputOptions& options) {
  const int32_t globalSid = options.resolvedGlobalSid();
  OutputServiceDescription& output = request.outputs[globalSid];
  output.globalSID = globalSid;
  output.nextNode = options.nextNode;
  output.outputSID = options.resolvedOutputSid();
  output.serviceName = options.resolvedName();
  output.transportStreamId = options.transportStreamId.value_or(1);
  output.originalNetworkId = options.originalNetworkId.value_or(1);
  output.outputParam = options.outputParam;
  if (options.lastNode != LastNode::kNone) {
    request.lastNodeSettings[globalSid] = makeNodes(options);
  }
}

}  // namespace

AudioFilter OutputOptions::resolvedAudio() const {
  if (lastNode == LastNode::kDirect) {
    return audio;
  }
  AudioFilter all;
  for (const ListedNode& node : listedNodes) {
    const AudioFilter& filter = node.audio ? node.audio : audio;
    if (!filter) {
      return std::nullopt;  // one that takes everything
    }
    auto& languages = all ? *all : all.emplace();
    languages.insert(languages.end(), filter->begin(), filter->end());
  }
  return all;
}

std::vector<SrvOutputRequest> makeRequests(const std::vector<OutputOptions>& outputs) {
  std::vector<SrvOutputRequest> requests;
  std::map<int32_t, size_t> places;  // by input service id
  for (const OutputOptions& options : outputs) {
    const auto [place, isNew] = places.emplace(options.inputSid, requests.size());
    if (isNew) {
      requests.emplace_back().inputSID = options.inputSid;
    }
    addOutput(requests[place->second], options);
  }
  return requests;
}

std::optional<std::vector<std::string>> parseLanguages(const std::string& text) {
  if (text == "none") {
    return std::vector<std::string>{};
  }
  const std::vector<std::string> codes = split(text, ",+");
  for (const std::string& code : codes) {
    if (code.size() != kLanguageCodeSize) {
      return std::nullopt;
    }
  }
  return codes;
}

std::optional<ListedNode> parseListedNode(const std::string& text) {
  const std::vector<std::string> parts = split(text, ":");
  const std::optional<int32_t> globalSid = parseNumber(parts[0]);
  const std::optional<int32_t> uniqueSid = parts.size() > 1 ? parseNumber(parts[1]) : globalSid;
  if (!globalSid || !uniqueSid || parts.size() > 3) {
    return std::nullopt;
  }
  ListedNode node = {*globalSid, *uniqueSid, std::nullopt};
  if (parts.size() == 3) {
    node.audio = parseLanguages(parts[2]);
    if (!node.audio) {
      return std::nullopt;
    }
  }
  return node;
}

std::optional<LastNode> parseLastNode(const std::string& text) {
  static const std::map<std::string, LastNode> kNames = {
      {"direct", LastNode::kDirect}, {"listed", LastNode::kListed}, {"none", LastNode::kNone}};
  const auto found = kNames.find(text);
  return found == kNames.end() ? std::nullopt : std::optional<LastNode>(found->second);
}

}  // namespace tevra::tools
