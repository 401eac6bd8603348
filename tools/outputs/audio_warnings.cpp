#include "tools/outputs/audio_warnings.h"

#include <algorithm>
#include <set>

#include "tools/descriptors/descriptor_values.h"
#include "tools/descriptors/stream_names.h"
#include "tools/outputs/carriage.h"
#include "tools/outputs/language_codes.h"
#include "tools/text/dvb_text.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

std::string languageOf(const PMTES& stream) {
  return printable(filterLanguage(stream));
}

/** Of all audio, filtered or not, each once. */
std::set<std::string> languagesOfAudio(const PMT& pmt) {
  std::set<std::string> languages;
  for (const PMTES& stream : pmt.esList) {
    if (isAudio(stream) || isFiltered(stream)) {
      languages.insert(languageOf(stream));
    }
  }
  return languages;
}

template <class Languages>
bool has(const Languages& languages, const std::string& language) {
  return std::any_of(languages.begin(), languages.end(), [&](const std::string& candidate) {
    return isSameLanguage(candidate, language);
  });
}

}  // namespace

std::vector<std::string> audioWarnings(const AudioFilter& wanted, const PMT& pmt,
                                       const std::string& side) {
  if (!wanted) {
    return {};
  }
  const std::set<std::string> present = languagesOfAudio(pmt);
  std::vector<std::string> missing;
  for (const std::string& language : *wanted) {
    if (!has(present, language) && !has(missing, language)) {
      missing.push_back(language);
    }
  }
  std::vector<std::string> lines;
  if (!missing.empty()) {
    std::transform(missing.begin(), missing.end(), missing.begin(),
                   [](const std::string& code) { return languageText(printable(code)); });
    lines.push_back("there is no audio in " + joined(missing, ", ") + ": the " + side +
                    (present.empty()
                         ? " has no audio"
                         : "'s is in " + joined({present.begin(), present.end()}, ", ")));
  }
  for (const PMTES& stream : pmt.esList) {
    if (isAudio(stream) && isCarried(stream.streamType) && !isFiltered(stream) &&
        !has(*wanted, languageOf(stream))) {
      lines.push_back(side + " PID " + std::to_string(stream.pid) + " (" + streamName(stream) +
                      ", " + languageOf(stream) +
                      ") is kept: audio of this type is not filtered by language");
    }
  }
  return lines;
}

}  // namespace tevra::tools
