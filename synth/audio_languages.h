#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/records.h"

/**
 * @file
 * Lists of audio languages: in order of first insertion, compared byte for byte, so "ENG" is not
 * "eng".
 */
namespace tevra {

/**
 * A list of audio languages with an index of it: a request may name a million. The list must
 * outlive this and grow by append alone meanwhile.
 */
class LanguageList {
 public:
  /** Of `entries`, which may hold a language more than once. */
  explicit LanguageList(std::vector<AudioLanguage>& entries);

  /** How many entries name `language`. */
  [[nodiscard]] size_t count(const std::string& language) const;

  /** Adds a copy of `entry` at the end. */
  void append(const AudioLanguage& entry);

 private:
  std::vector<AudioLanguage>& entries_;
  std::unordered_map<std::string, size_t> counts_;
};

/** Logs every match at level 7. */
[[nodiscard]] bool languageExists(const LanguageList& list, const std::string& language);

/** Appends those of `source` that `target` lacks, in order. */
void mergeLanguages(LanguageList& target, const std::vector<AudioLanguage>& source);

/** For people: `Audios: "spa", "eng", `. At most 79 characters; entries that do not fit are left
 * out. */
[[nodiscard]] std::string formatLanguageList(const std::vector<AudioLanguage>& list);

/**
 * Combines the audio filters of all last nodes of an output: on only if every entry filters, and
 * then for the union of their languages and those of `combined`, which no entries leave as it is.
 */
void combineAudioSelection(LastNodeSettings& combined,
                           const std::vector<LastNodeSettings>& entries);

}  // namespace tevra
