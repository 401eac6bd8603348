#pragma once

#include <string>
#include <vector>

#include "records/records.h"
#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** What a PMT says of one of its streams. */
struct StreamTraits {
  StreamKind kind = StreamKind::kData;  ///< video, audio, subtitles or data
  std::string description;              ///< "AVC video", "AC-3 audio", "teletext"
  std::vector<std::string> languages;   ///< of sound, then of texts, these each once
};

/** By stream type, and by descriptors where the type says nothing (EN 300 468, 6.1, table 12). */
[[nodiscard]] StreamTraits traitsOf(const PMTES& stream);

/** What a PID below 0x20 is reserved for: "PAT" (EN 300 468, 5.1.3); empty for any other. */
[[nodiscard]] std::string reservedPidName(int pid);

/** "video", "PSI/SI": the kind in a legend. */
[[nodiscard]] std::string kindName(StreamKind kind);
/** One lower-case word for class names and JSON: "video", "tables", "ca". */
[[nodiscard]] std::string kindWord(StreamKind kind);

}  // namespace tevra::tools::report
