#include "synth/audio_languages.h"

#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr const char* kTag = "fltr";
constexpr size_t kFormattedSize =
    80;  // with the terminating zero of the device's tools that print it

}  // namespace

bool languageExists(const std::vector<AudioLanguage>& list, const std::string& language) {
  bool exists = false;
  for (const AudioLanguage& entry : list) {
    if (entry.language == language) {
      log_function(kLogDebug, kTag, "Language alredy Exists at langOutList [%s]", language.c_str());
      exists = true;
    }
  }
  return exists;
}

void mergeLanguages(std::vector<AudioLanguage>& target, const std::vector<AudioLanguage>& source) {
  for (const AudioLanguage& entry : source) {
    if (!languageExists(target, entry.language)) {
      log_function(kLogDebug, kTag, "Adding new lang to list [%s]", entry.language.c_str());
      target.push_back(entry);
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
  for (const LastNodeSettings& entry : entries) {
    if (entry.audioFilter == 0) {
      combined.audioFilter = 0;
      combined.audioLanguages.clear();
      return;
    }
    combined.audioFilter = 1;
    mergeLanguages(combined.audioLanguages, entry.audioLanguages);
  }
}

}  // namespace tevra
