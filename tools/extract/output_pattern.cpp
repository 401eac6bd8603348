#include "tools/extract/output_pattern.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <set>

#include "tools/stream/files.h"
#include "tools/stream/packet_sink.h"
#include "tools/stream/udp_address.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr size_t kLongestName = 100;

using Value = std::string (*)(const OutputOptions& output);

const std::map<std::string, Value>& placeholders() {
  static const std::map<std::string, Value> kPlaceholders = {
      {"service", [](const OutputOptions& output) { return std::to_string(output.inputSid); }},
      {"gsid",
       [](const OutputOptions& output) { return std::to_string(output.resolvedGlobalSid()); }},
      {"sid",
       [](const OutputOptions& output) { return std::to_string(output.resolvedOutputSid()); }},
      {"name", [](const OutputOptions& output) { return safeFileName(output.resolvedName()); }},
  };
  return kPlaceholders;
}

bool isSafe(unsigned char c) {
  const bool isAlphanumeric =
      (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z');
  return isAlphanumeric || c == '.' || c == '-' || c == '+' || c >= 0x80;
}

/** However they are written, and with or without RTP. Raises ToolError for what is none. */
bool isSameAddress(const std::string& a, const std::string& b) {
  const UdpAddress first = parseUdpAddress(a);
  const UdpAddress second = parseUdpAddress(b);
  return first.address == second.address && first.port == second.port;
}

/** One path for all the ways to write it, to a file that may not be there yet. */
std::filesystem::path canonical(const std::string& file) {
  std::error_code error;
  const std::filesystem::path path = std::filesystem::weakly_canonical(file, error);
  return error ? std::filesystem::path(file).lexically_normal() : path.lexically_normal();
}

}  // namespace

OutputPattern::OutputPattern(const std::string& text) : text_(text) {
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '{') {
      readBrace(at);
    } else {
      add(text[at]);
    }
  }
}

/** `at` is where the brace stands, and then where what it begins ends. */
void OutputPattern::readBrace(size_t& at) {
  if (text_.compare(at, 2, "{{") == 0) {
    ++at;
    add('{');
    return;
  }
  const size_t end = std::min(text_.find('}', at), text_.size());
  const std::string name = text_.substr(at + 1, end - at - 1);
  if (end == text_.size() || placeholders().count(name) == 0) {
    throw UsageError("-o " + text_ + ": '" + text_.substr(at, end - at + 1) +
                     "' is not {service}, {gsid}, {sid} or {name}; {{ stands for a brace");
  }
  parts_.push_back({true, name});
  at = end;
}

void OutputPattern::add(char c) {
  if (parts_.empty() || parts_.back().isPlaceholder) {
    parts_.push_back({false, ""});
  }
  parts_.back().text += c;
}

bool OutputPattern::hasPlaceholder() const {
  return std::any_of(parts_.begin(), parts_.end(),
                     [](const Part& part) { return part.isPlaceholder; });
}

bool OutputPattern::uses(const std::string& placeholder) const {
  return std::any_of(parts_.begin(), parts_.end(), [&](const Part& part) {
    return part.isPlaceholder && part.text == placeholder;
  });
}

std::string OutputPattern::fileFor(const OutputOptions& output) const {
  std::string file;
  for (const Part& part : parts_) {
    file += part.isPlaceholder ? placeholders().at(part.text)(output) : part.text;
  }
  return file;
}

std::vector<std::string> filesFor(const OutputPattern& pattern,
                                  const std::vector<OutputOptions>& outputs,
                                  const std::string& input) {
  std::vector<std::string> files;
  files.reserve(outputs.size());
  std::set<std::filesystem::path> taken;
  for (const OutputOptions& output : outputs) {
    const std::string file = pattern.fileFor(output);
    if (isLiveSink(file) && isLiveSource(input) && isSameAddress(file, input)) {
      throw UsageError("output and input are the same address, " + file);
    }
    if (isSameFile(file, input)) {
      throw UsageError("output and input are the same file, " + file);
    }
    if (!taken.insert(canonical(file)).second) {
      throw UsageError("-o " + pattern.text() + ": two outputs would go to " + file +
                       "; {gsid} keeps them apart");
    }
    files.push_back(file);
  }
  return files;
}

std::string safeFileName(const std::string& utf8) {
  size_t size = std::min(utf8.size(), kLongestName);
  while (size > 0 && size < utf8.size() && isContinuation(utf8[size])) {
    --size;  // no half character
  }
  std::string safe = utf8.substr(0, size);
  std::replace_if(
      safe.begin(), safe.end(), [](char c) { return !isSafe(static_cast<unsigned char>(c)); }, '_');
  if (safe.empty()) {
    return "_";
  }
  if (safe[0] == '.' || safe[0] == '-') {
    safe[0] = '_';
  }
  return safe;
}

}  // namespace tevra::tools
