#include "tests/system/crash_states.h"

#include <stdexcept>

namespace tevra::test {
namespace {

bool isOneOf(const std::string& name, const std::set<std::string>& names) {
  return names.count(name) > 0;
}

/** What may be left of `text` of which `durable` bytes are safe: all of the rest, a half of it or
 * nothing, and zeros instead. */
std::set<std::string> remains(const std::string& text, size_t durable) {
  std::set<std::string> all;
  for (const size_t size : {durable, durable + (text.size() - durable) / 2, text.size()}) {
    all.insert(text.substr(0, size));
    all.insert(text.substr(0, durable) + std::string(size - durable, '\0'));
  }
  return all;
}

}  // namespace

std::string CrashStates::relative(const std::string& path) const {
  return path.rfind(root_ + "/", 0) == 0 ? path.substr(root_.size() + 1) : std::string();
}

void CrashStates::take(const SystemCall& call) {
  if (call.result < 0) {
    return;
  }
  if (call.name == "openat") {
    open(call);
  } else if (call.name == "rename") {
    rename(call.arguments.at(0), call.arguments.at(1));
  } else if (isOneOf(call.name, {"renameat", "renameat2"})) {
    rename(call.arguments.at(1), call.arguments.at(3));
  } else if (isOneOf(call.name, {"unlink", "unlinkat"})) {
    change({relative(call.arguments.at(call.name == "unlink" ? 0 : 1)), "", nullptr});
  } else if (isOneOf(call.name, {"sync", "syncfs"})) {
    syncAll();
  } else {
    takeDescriptorCall(call);
  }
}

void CrashStates::takeDescriptorCall(const SystemCall& call) {
  const auto file = open_.find(call.arguments.empty() ? "" : call.arguments[0]);
  if (file == open_.end()) {
    return;
  }
  Content& content = *file->second;
  if (call.name == "write") {
    content.text += call.arguments.at(1).substr(0, static_cast<size_t>(call.result));
  } else if (isOneOf(call.name, {"fsync", "fdatasync"})) {
    content.durable = content.text.size();
  } else if (call.name == "close") {
    open_.erase(file);
  } else if (isOneOf(call.name, {"pwrite64", "writev", "ftruncate", "fallocate"})) {
    throw std::runtime_error("what " + call.name + " leaves after a crash is not known here");
  }
}

void CrashStates::open(const SystemCall& call) {
  const std::string path = relative(call.arguments.at(1));
  const std::string& flags = call.arguments.at(2);
  if (path.empty() || flags.find("O_WRONLY") == std::string::npos) {
    return;
  }
  const bool anew = names_.count(path) == 0 || flags.find("O_TRUNC") != std::string::npos;
  if (anew) {
    change({"", path, std::make_shared<Content>()});
  }
  open_[std::to_string(call.result)] = names_.at(path);
}

void CrashStates::rename(const std::string& from, const std::string& to) {
  if (!relative(from).empty()) {
    change({relative(from), relative(to), names_.at(relative(from))});
  }
}

void CrashStates::change(const Change& change) {
  changes_.push_back(change);
  names_.erase(change.from);
  if (change.content != nullptr) {
    names_[change.to] = change.content;
  }
}

void CrashStates::syncAll() {
  for (const auto& [path, content] : names_) {
    content->durable = content->text.size();
  }
  durableNames_ = names_;
  changes_.clear();
}

std::set<Files> CrashStates::now() const {
  std::set<Files> states;
  Names names = durableNames_;
  for (size_t changed = 0;; ++changed) {
    std::set<Files> partly = {{}};
    for (const auto& [path, content] : names) {
      std::set<Files> further;
      for (const std::string& text : remains(content->text, content->durable)) {
        for (Files files : partly) {
          files[path] = text;
          further.insert(std::move(files));
        }
      }
      partly = std::move(further);
    }
    states.merge(partly);
    if (changed == changes_.size()) {
      return states;
    }
    const Change& change = changes_[changed];
    names.erase(change.from);
    if (change.content != nullptr) {
      names[change.to] = change.content;
    }
  }
}

}  // namespace tevra::test
