#pragma once

#include <string>
#include <vector>

#include "records/records.h"

/**
 * @file
 * Lists of audio languages: in order of first insertion, compared byte for byte, so "ENG" is not
 * "eng".
 */
namespace tevra {

/** Logs every match at level 7. */
[[nodiscard]] bool languageExists(const std::vector<AudioLanguage>& list,
                                  const std::string& language);

/** Appends those of `source` that `target` lacks, in order. */
void mergeLanguages(std::vector<AudioLanguage>& target, const std::vector<AudioLanguage>& source);

/** For people: `Audios: "spa", "eng", `. At most 79 characters; entries that do not fit are left
 * out. */
[[nodiscard]] std::string formatLanguageList(const std::vector<AudioLanguage>& list);

/**
 * Combines the audio filters of all last nodes of an output: on only if every entry filters, and
 * then for the union of their languages. `combined` starts with the filter off and no languages; no
 * entries leave it so.
 */
void combineAudioSelection(LastNodeSettings& combined,
                           const std::vector<LastNodeSettings>& entries);

}  // namespace tevra
