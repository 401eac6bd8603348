#include "synth/elementary_streams.h"

#include <algorithm>
#include <array>
#include <new>
#include <string>

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

// In order of priority. The ATSC descriptor is reported as 0x6A: log readers in the field expect
// it.
constexpr std::array<PrivateAudio, 4> kPrivateAudio = {{
    {0x6A, 0x6A, "A52"},
    {0x81, 0x6A, "A52"},
    {0x7A, 0x7A, "EAC3"},
    {0x73, 0x73, "DTS"},
}};

/** A platform's English code may be longer than three letters; what is compared is not longer than
 * this. */
constexpr size_t kMaxLanguageCode = 4;

bool hasDescriptor(const dvbpsi_pmt_es_t& es, uint8_t tag) {
  for (const auto* node = es.p_first_descriptor; node != nullptr; node = node->p_next) {
    if (node->i_tag == tag) {
      return true;
    }
  }
  return false;
}

bool isAudioStream(const dvbpsi_pmt_es_t& es) {
  bool isAudio = es.i_type == kMpeg1Audio || es.i_type == kMpeg2Audio;
  if (es.i_type == kPrivatePes) {
    detectPrivateAudio(es, isAudio);
  }
  return isAudio;
}

std::string languageOf(dvbpsi_descriptor_t& descriptor) {
  const dvbpsi_iso639_dr_t* decoded = dvbpsi_DecodeISO639Dr(&descriptor);
  if (decoded == nullptr) {
    log_function(kLogDebug, nullptr, "Can't decode language code");
    return kNoLanguage;
  }
  std::string language(reinterpret_cast<const char*>(decoded->code[0].iso_639_code),
                       sizeof(iso_639_language_code_t));
  std::string english;
  std::string other;
  if (getEnglishAudioCode(language, english, other)) {
    language = english.substr(0, kMaxLanguageCode);
  } else {
    log_function(kLogError, nullptr, "Can't get the English audio code");
  }
  return language.substr(0, language.find('\0'));
}

std::string streamLanguage(const dvbpsi_pmt_es_t& es) {
  std::string language = kNoLanguage;
  for (auto* node = es.p_first_descriptor; node != nullptr; node = node->p_next) {
    if (node->i_tag == kIso639LanguageTag) {
      language = languageOf(*node);
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

/** Copies a descriptor loop to `target` and collects its ECM PIDs. */
void copyDescriptors(dvbpsi_descriptor_t* source, dvbpsi_descriptor_t*& target, PidList& pidList) {
  DescriptorAppender appender(target);
  for (auto* node = source; node != nullptr; node = node->p_next) {
    const dvbpsi_ca_dr_t* ca = node->i_tag == kCaDescriptorTag ? dvbpsi_DecodeCADr(node) : nullptr;
    if (ca != nullptr) {
      addPidItem(pidList, ca->i_ca_pid, PidAttribute::Ecm);
    }
    appender.add(node->i_tag, node->p_data, node->i_length);
  }
}

PmtPtr emptyCopy(const dvbpsi_pmt_t& source) {
  PmtPtr copy(dvbpsi_pmt_new(source.i_program_number, source.i_version, source.b_current_next,
                             source.i_pcr_pid));
  if (copy == nullptr) {
    throw std::bad_alloc();
  }
  return copy;
}

}  // namespace

void detectPrivateAudio(const dvbpsi_pmt_es_t& es, bool& isAudio) {
  for (const PrivateAudio& audio : kPrivateAudio) {
    if (hasDescriptor(es, audio.tag)) {
      isAudio = true;
      log_function(kLogDebug, nullptr, "[0x%02x] Audio found %s", audio.printed, audio.codec);
      return;
    }
  }
}

bool keepElementaryStream(dvbpsi_pmt_es_t& es, const std::vector<AudioLanguage>& wantedLanguages) {
  const bool isAudio = isAudioStream(es);
  const std::string language = streamLanguage(es);
  return !isAudio ||
         std::any_of(wantedLanguages.begin(), wantedLanguages.end(),
                     [&](const AudioLanguage& wanted) { return wanted.language == language; });
}

bool filterPmt(PMT& outPmt, PidList& pidList, const PAT& pat, const PMT& inPmt, bool filterAudio,
               const std::vector<AudioLanguage>& wantedLanguages) {
  const PmtPtr source = thrift::dvb_tables::t2dPMT(inPmt);
  addPidItem(pidList, pmtPidOf(inPmt, pat), PidAttribute::Pmt);
  addPidItem(pidList, source->i_pcr_pid, PidAttribute::Pcr);

  const PmtPtr filtered = emptyCopy(*source);
  copyDescriptors(source->p_first_descriptor, filtered->p_first_descriptor, pidList);
  StreamAppender streams(*filtered);
  for (auto* es = source->p_first_es; es != nullptr; es = es->p_next) {
    const bool wanted = keepElementaryStream(*es, wantedLanguages);
    if (!wanted && filterAudio) {
      continue;
    }
    addPidItem(pidList, es->i_pid, PidAttribute::Es);
    dvbpsi_pmt_es_t& kept = streams.add(es->i_type, es->i_pid);
    copyDescriptors(es->p_first_descriptor, kept.p_first_descriptor, pidList);
  }
  outPmt = thrift::dvb_tables::d2tPMT(filtered.get());
  return true;
}

}  // namespace tevra
