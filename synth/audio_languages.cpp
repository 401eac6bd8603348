#include "synth/audio_languages.h"

#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr const char* kTag = "fltr";
constexpr size_t kFormattedSize =
    80;  // with the terminating zero of the device's tools that print it

}  // namespace

LanguageList::LanguageList(std::vector<AudioLanguage>& entries) : entries_(entries) {
  for (const AudioLanguage& entry : entries) {
    ++counts_[entry.language];
  }
}

size_t LanguageList::count(const std::string& language) const {
  const auto found = counts_.find(language);
  return found == counts_.end() ? 0 : found->second;
}

void LanguageList::append(const AudioLanguage& entry) {
  entries_.push_back(entry);
  ++counts_[entry.language];
}

bool languageExists(const LanguageList& list, const std::string& language) {
  const size_t matches = list.count(language);
  for (size_t match = 0; match < matches; ++match) {
    log_function(kLogDebug, kTag, "Language alredy Exists at langOutList [%s]", language.c_str());
  }
  return matches != 0;
}

void mergeLanguages(LanguageList& target, const std::vector<AudioLanguage>& source) {
  for (const AudioLanguage& entry : source) {
    if (!languageExists(target, entry.language)) {
      log_function(kLogDebug, kTag, "Adding new lang to list [%s]", entry.language.c_str());
      target.append(entry);
    }
  }
}

std::string formatLanguageList(const std::vector<AudioLanguage>& list) {
  std::string text = "Audios: ";
  for (const AudioLanguage& entry : list) {
    const std::string formatted = "\"" + entry.language + "\", ";
    if (text.size() + formatted.size() < kFormattedSize) {
      text += formatted;
    }
  }
  return text;
}

void combineAudioSelection(LastNodeSettings& combined,
                           const std::vector<LastNodeSettings>& entries) {
  LanguageList languages(combined.audioLanguages);
  for (const LastNodeSettings& entry : entries) {
    if (entry.audioFilter == 0) {
      combined.audioFilter = 0;
      combined.audioLanguages.clear();
      return;
    }
    combined.audioFilter = 1;
    mergeLanguages(languages, entry.audioLanguages);
  }
}

}  // namespace tevra
