#include "tools/report/facts/references.h"

#include "tools/report/facts/stream_traits.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

constexpr int kIso639Language = 0x0A;
constexpr size_t kLanguageEntry = 4;  // three letters and the audio_type

bool mayPause(const PMTES& stream) {
  for (const Descriptor& descriptor : stream.descriptors) {
    for (size_t end = kLanguageEntry;
         descriptor.tag == kIso639Language && end <= descriptor.data.size();
         end += kLanguageEntry) {
      if (descriptor.data[end - 1] != 0) {
        return true;
      }
    }
  }
  return false;
}

bool isMedia(const PMTES& stream) {
  const StreamKind kind = traitsOf(stream).kind;
  return kind == StreamKind::kVideo || (kind == StreamKind::kAudio && !mayPause(stream));
}

}  // namespace

References referencesOf(const TableJournal& journal) {
  References references;
  for (const PATProgram& program :
       journal.pat() ? journal.pat()->programs : std::vector<PATProgram>{}) {
    if (program.programNumber == 0) {
      continue;
    }
    references.pmts.insert(program.pid);
    const PMT* pmt = journal.pmt(program.programNumber);
    if (pmt == nullptr) {
      continue;
    }
    if (pmt->pcrPid != kNullPid) {
      references.clocks.insert(pmt->pcrPid);
    }
    for (const PMTES& stream : pmt->esList) {
      if (stream.pid != kNullPid && isMedia(stream)) {
        references.media.insert(stream.pid);
      }
    }
  }
  return references;
}

}  // namespace tevra::tools::report
