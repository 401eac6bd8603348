#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "records/records.h"
#include "synth/pid_items.h"

namespace tevra {

/** PID of a PMT whose programme is not in the PAT: docs/contract.md, "Missing programme". */
inline constexpr int32_t kDefaultPmtPid = 0x666;

/** Language of a stream that names none; compared like any other. */
inline constexpr std::string_view kNoLanguage = "ndl";

/**
 * Sets `isAudio` when a private stream (type 0x06) carries an AC-3, ATSC AC-3, enhanced AC-3 or DTS
 * descriptor, and logs which one at level 7, in that order of priority; otherwise leaves it as it
 * is.
 */
void detectPrivateAudio(const PMTES& es, bool& isAudio);

/** The languages that an output wants. A request may name a million: many are found by an index. */
class WantedLanguages {
 public:
  /** Of `list`, which must outlive this and stay as it is. */
  explicit WantedLanguages(const std::vector<AudioLanguage>& list);

  /** Whether any of them is `language`, byte for byte. */
  [[nodiscard]] bool has(std::string_view language) const;

 private:
  const std::vector<AudioLanguage>& list_;
  std::vector<std::string_view> index_;  ///< sorted; empty when they are few
};

/**
 * Whether the stream passes the language filter: true for anything but audio; for audio, whether
 * the language of its last ISO 639 descriptor (ISO/IEC 13818-1, 2.6.18; first entry, in its English
 * form; kNoLanguage where there is none, or none that can be decoded) is wanted. Logs the kind of
 * private audio and an undecodable language at level 7, an unknown one at level 3. The stream's
 * descriptors must fit sections.
 */
[[nodiscard]] bool keepElementaryStream(const PMTES& es, const WantedLanguages& wantedLanguages);

/**
 * Rebuilds `inPmt` into `outPmt` without the audio streams that `filterAudio` sorts out, and adds
 * every PID that the programme then needs to `pidList`: PMT (from `pat`, kDefaultPmtPid if absent
 * there), PCR, kept streams, and the ECMs of the programme and of kept streams. Languages are
 * analysed, and logged, also without the filter. Values come out as wide as in the sections. Always
 * true.
 */
bool filterPmt(PMT& outPmt, PidList& pidList, const PAT& pat, const PMT& inPmt, bool filterAudio,
               const std::vector<AudioLanguage>& wantedLanguages);

}  // namespace tevra
