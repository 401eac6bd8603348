#include "synth/audio_languages.h"

#include <algorithm>
#include <unordered_map>

#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr const char* kTag = "fltr";
constexpr size_t kFormattedSize =
    80;  // with the terminating zero of the device's tools that print it

void logMatches(const std::string& language, size_t matches) {
  for (size_t match = 0; match < matches; ++match) {
    log_function(kLogDebug, kTag, "Language alredy Exists at langOutList [%s]", language.c_str());
  }
}

/** Appends to a list what it lacks. An index knows the list: a request may name a million. */
class LanguageUnion {
 public:
  explicit LanguageUnion(std::vector<AudioLanguage>& list) : list_(list) {
    for (const AudioLanguage& entry : list) {
      ++occurrences_[entry.language];
    }
  }

  void merge(const std::vector<AudioLanguage>& source) {
    for (const AudioLanguage& entry : source) {
      size_t& matches = occurrences_[entry.language];
      logMatches(entry.language, matches);
      if (matches == 0) {
        log_function(kLogDebug, kTag, "Adding new lang to list [%s]", entry.language.c_str());
        list_.push_back(entry);
        matches = 1;
      }
    }
  }

 private:
  std::vector<AudioLanguage>& list_;
  std::unordered_map<std::string, size_t> occurrences_;
};

}  // namespace

bool languageExists(const std::vector<AudioLanguage>& list, const std::string& language) {
  const auto matches = std::count_if(list.begin(), list.end(), [&](const AudioLanguage& entry) {
    return entry.language == language;
  });
  logMatches(language, static_cast<size_t>(matches));
  return matches != 0;
}

void mergeLanguages(std::vector<AudioLanguage>& target, const std::vector<AudioLanguage>& source) {
  LanguageUnion(target).merge(source);
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
  LanguageUnion languages(combined.audioLanguages);
  for (const LastNodeSettings& entry : entries) {
    if (entry.audioFilter == 0) {
      combined.audioFilter = 0;
      combined.audioLanguages.clear();
      return;
    }
    combined.audioFilter = 1;
    languages.merge(entry.audioLanguages);
  }
}

}  // namespace tevra
