#include "synth/elementary_streams.h"

#include <algorithm>
#include <array>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "cfdb/ca_descriptors.h"
#include "platform/dvb_utils.h"
#include "platform/module_utils.h"
#include "records/dvbpsi_converters.h"
#include "records/dvbpsi_lists.h"

namespace tevra {
namespace {

constexpr uint8_t kMpeg1Audio = 0x03;
constexpr uint8_t kMpeg2Audio = 0x04;
constexpr uint8_t kPrivatePes = 0x06;
constexpr uint8_t kIso639LanguageTag = 0x0A;

struct PrivateAudio {
  uint8_t tag;
  uint8_t printed;
  const char* codec;
};

// In order of priority. The ATSC descriptor is reported as 0x6A: docs/contract.md, "Messages".
constexpr std::array<PrivateAudio, 4> kPrivateAudio = {{
    {0x6A, 0x6A, "A52"},
    {0x81, 0x6A, "A52"},
    {0x7A, 0x7A, "EAC3"},
    {0x73, 0x73, "DTS"},
}};

/** A platform's English code may be longer than three letters; what is compared is not longer than
 * this. */
constexpr size_t kMaxLanguageCode = 4;

/** Up to here looking at each is faster than an index. */
constexpr size_t kFewLanguages = 16;

bool hasDescriptor(const PMTES& es, uint8_t tag) {
  return std::any_of(es.descriptors.begin(), es.descriptors.end(),
                     [&](const Descriptor& descriptor) { return descriptor.tag == tag; });
}

bool isAudioStream(const PMTES& es) {
  bool isAudio = es.streamType == kMpeg1Audio || es.streamType == kMpeg2Audio;
  if (es.streamType == kPrivatePes) {
    detectPrivateAudio(es, isAudio);
  }
  return isAudio;
}

std::string languageOf(const Descriptor& descriptor) {
  DecodableDescriptor source(descriptor);
  const size_t size = descriptor.data.size();  // of four bytes a language: ISO/IEC 13818-1, 2.6.18
  const dvbpsi_iso639_dr_t* decoded =
      size > 0 && size % 4 == 0 ? allocated(dvbpsi_DecodeISO639Dr(source.get())) : nullptr;
  if (decoded == nullptr) {
    log_function(kLogDebug, kNoTag, "Can't decode language code");
    return std::string(kNoLanguage);
  }
  std::string language(reinterpret_cast<const char*>(decoded->code[0].iso_639_code),
                       sizeof(iso_639_language_code_t));
  std::string english;
  std::string other;
  if (getEnglishAudioCode(language, english, other)) {
    language.assign(english, 0, kMaxLanguageCode);
  } else {
    log_function(kLogError, kNoTag, "Can't get the English audio code");
  }
  language.resize(std::min(language.find('\0'), language.size()));
  return language;
}

/** Of the last language descriptor; nothing without one. All are decoded, since each may be logged.
 */
std::optional<std::string> streamLanguage(const PMTES& es) {
  std::optional<std::string> language;
  for (const Descriptor& descriptor : es.descriptors) {
    if (descriptor.tag == kIso639LanguageTag) {
      language = languageOf(descriptor);
    }
  }
  return language;
}

int32_t pmtPidOf(const PMT& pmt, const PAT& pat) {
  for (const PATProgram& program : pat.programs) {
    if (program.programNumber == pmt.programNumber) {
      return program.pid;
    }
  }
  return kDefaultPmtPid;
}

void collectEcmPids(PidList& pidList, const std::vector<Descriptor>& descriptors) {
  for (const Descriptor& descriptor : descriptors) {
    DecodableDescriptor source(descriptor);
    if (const dvbpsi_ca_dr_t* ca = decodedCa(*source.get())) {
      addPidItem(pidList, ca->i_ca_pid, PidAttribute::Ecm);
    }
  }
}

}  // namespace

void detectPrivateAudio(const PMTES& es, bool& isAudio) {
  for (const PrivateAudio& audio : kPrivateAudio) {
    if (hasDescriptor(es, audio.tag)) {
      isAudio = true;
      log_function(kLogDebug, kNoTag, "[0x%02x] Audio found %s", audio.printed, audio.codec);
      return;
    }
  }
}

WantedLanguages::WantedLanguages(const std::vector<AudioLanguage>& list) : list_(list) {
  if (list.size() > kFewLanguages) {
    for (const AudioLanguage& entry : list) {
      index_.emplace_back(entry.language);
    }
    std::sort(index_.begin(), index_.end());
  }
}

bool WantedLanguages::has(std::string_view language) const {
  if (!index_.empty()) {
    return std::binary_search(index_.begin(), index_.end(), language);
  }
  return std::any_of(list_.begin(), list_.end(),
                     [&](const AudioLanguage& entry) { return entry.language == language; });
}

bool keepElementaryStream(const PMTES& es, const WantedLanguages& wantedLanguages) {
  const bool isAudio = isAudioStream(es);
  const std::optional<std::string> language = streamLanguage(es);
  return !isAudio || wantedLanguages.has(language ? *language : kNoLanguage);
}

bool filterPmt(PMT& outPmt, PidList& pidList, const PAT& pat, const PMT& inPmt, bool filterAudio,
               const std::vector<AudioLanguage>& wantedLanguages) {
  PMT pmt = narrowPMT(inPmt);
  addPidItem(pidList, pmtPidOf(inPmt, pat), PidAttribute::Pmt);
  addPidItem(pidList, pmt.pcrPid, PidAttribute::Pcr);
  collectEcmPids(pidList, pmt.descriptors);
  const WantedLanguages languages(wantedLanguages);
  auto kept = pmt.esList.begin();
  for (PMTES& es : pmt.esList) {
    const bool wanted = keepElementaryStream(es, languages);
    if (!wanted && filterAudio) {
      continue;
    }
    addPidItem(pidList, es.pid, PidAttribute::Es);
    collectEcmPids(pidList, es.descriptors);
    if (&*kept != &es) {
      *kept = std::move(es);
    }
    ++kept;
  }
  pmt.esList.erase(kept, pmt.esList.end());
  outPmt = std::move(pmt);
  return true;
}

}  // namespace tevra
