#pragma once

#include <string>
#include <vector>

#include "records/records.h"

/**
 * @file
 * What the daemon does with the streams of a PMT, so far as a client can know: docs/contract.md,
 * "Stream types".
 */
namespace tevra::tools {

/** The language of a stream that names none. */
inline constexpr const char* kNoLanguage = "ndl";

/** Whether an output can have streams of the type at all. */
[[nodiscard]] bool isCarried(int streamType);

/** Whether the filter by language looks at the stream: not at AAC, for one. */
[[nodiscard]] bool isFiltered(const PMTES& stream);

/**
 * By which language the filter knows a stream: the first of its last ISO 639 language descriptor,
 * byte for byte; kNoLanguage without one, or where that is none.
 */
[[nodiscard]] std::string filterLanguage(const PMTES& stream);

/** The languages of the streams that are filtered, in order, each once. */
[[nodiscard]] std::vector<std::string> filterLanguages(const PMT& pmt);

}  // namespace tevra::tools
