#pragma once

#include <string>
#include <vector>

/**
 * @file
 * Language codes of three letters (ISO 639-2), of which twenty languages have two: "fre", the
 * bibliographic, and "fra", the terminological. Streams write either, in any case, and the daemon
 * compares bytes.
 */
namespace tevra::tools {

/** Whether two codes mean one language: in any case, and under either code. */
[[nodiscard]] bool isSameLanguage(const std::string& one, const std::string& other);

/**
 * What to ask a daemon for when `language` is wanted: as it is written, and both codes in lower
 * case. Besides these the forms that stand in `streamCodes`, where that is the stream; without any
 * both codes in capitals, and with one.
 */
[[nodiscard]] std::vector<std::string> codesToAskFor(const std::string& language,
                                                     const std::vector<std::string>& streamCodes);

/** For people, with the other code behind a slash: "fre/fra"; as it is where there is no other. */
[[nodiscard]] std::string languageText(const std::string& code);

}  // namespace tevra::tools
