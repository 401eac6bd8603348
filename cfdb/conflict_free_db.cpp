#include "cfdb/conflict_free_db.h"

#include <mutex>
#include <utility>

#include "cfdb/ca_descriptors.h"
#include "cfdb/dvb_time.h"
#include "cfdb/stream_filter.h"
#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr bool kKeepCA = false;
constexpr bool kDropCA = true;

bool copyEIT(const EITMap& store, int32_t serviceId, int32_t tableId, EIT& out) {
  const auto tables = store.find(serviceId);
  if (tables == store.end()) {
    return false;
  }
  const auto eit = tables->second.find(tableId);
  if (eit == tables->second.end()) {
    return false;
  }
  out = eit->second;
  return true;
}

/** Makes `out` the EITs of `store` that `in`, which is merged into it, mentions. */
void copyMentioned(const EITMap& store, const EITMap& in, EITMap& out) {
  out.clear();
  for (const auto& [serviceId, tables] : in) {
    for (const auto& [tableId, ignored] : tables) {
      (void)copyEIT(store, serviceId, tableId, out[serviceId][tableId]);
    }
  }
}

}  // namespace

ConflictFreeDB::ConflictFreeDB(int32_t chainIndex, ConflictFreeDBOwner& owner)
    : owner_(owner), pids_(chainIndex) {}

bool ConflictFreeDB::setConflictFreePAT(PAT& out, const PAT& in) {
  MutexLock lock(patMutex_);
  pids_.followTransportStream(in.transportStreamId);
  PAT pat;
  pat.transportStreamId = in.transportStreamId;
  pat.version = in.version;
  pat.currentNext = in.currentNext;
  pat.programs.reserve(in.programs.size());
  for (const PATProgram& program : in.programs) {
    PATProgram& remapped = pat.programs.emplace_back();
    remapped.programNumber = program.programNumber;
    remapped.pid = pids_.getConflictFreePID(program.pid);
  }
  log_function(kLogDebug, kNoTag, "Guardo PAT en DB local!");
  replaceTable(pats_, pat);
  const bool stored = copyTable(pats_, out);
  pids_.saveConflictFreeDB();
  return stored;
}

bool ConflictFreeDB::setConflictFreeSDT(const SDT& in) {
  MutexLock lock(sdtMutex_);
  log_function(kLogDebug, kNoTag, "Guardo SDT en DB local!");
  replaceTable(sdts_, in);
  return true;
}

PMT ConflictFreeDB::makeConflictFreePMT(const PMT& in) {
  PMT pmt;
  pmt.programNumber = in.programNumber;
  pmt.version = in.version;
  pmt.currentNext = in.currentNext;
  pmt.pcrPid = pids_.getConflictFreePID(in.pcrPid);
  pmt.descriptors = cfDescriptors(in.descriptors, kKeepCA, pids_);
  for (const PMTES& stream : in.esList) {
    if (!isCarriedStreamType(stream.streamType)) {
      continue;
    }
    PMTES& remapped = pmt.esList.emplace_back();
    remapped.streamType = stream.streamType;
    remapped.pid = pids_.getConflictFreePID(stream.pid);
    log_function(kLogDebug, kNoTag, "iES  PID [%05d/%04x] oES  PID [%05d/%04x]", stream.pid,
                 static_cast<unsigned>(stream.pid), remapped.pid,
                 static_cast<unsigned>(remapped.pid));
    remapped.descriptors = cfDescriptors(stream.descriptors, kKeepCA, pids_);
  }
  return pmt;
}

bool ConflictFreeDB::setConflictFreePMT(PMT& out, const PMT& in) {
  MutexLock lock(pmtMutex_);
  PMT pmt = makeConflictFreePMT(in);
  log_function(kLogDebug, kNoTag, "Guardo PMT en DB local! inputSID [0x%04x]",
               static_cast<unsigned>(in.programNumber));
  out = pmt;
  pmts_[in.programNumber] = std::move(pmt);
  pids_.saveConflictFreeDB();
  return true;
}

bool ConflictFreeDB::setConflictFreeCAT(CAT& out, const CAT& in) {
  MutexLock lock(catMutex_);
  CAT cat = in;
  cat.descriptors = cfDescriptors(in.descriptors, kKeepCA, pids_);
  log_function(kLogDebug, kNoTag, "Guardo CAT en DB local!");
  replaceTable(cats_, cat);
  return copyTable(cats_, out);
}

bool ConflictFreeDB::setConflictFreeTOT(TOT& out, const TOT& in) {
  MutexLock lock(totMutex_);
  log_function(kLogDebug, kNoTag, "Guardo TOT en DB local!");
  replaceTable(tots_, in);
  return copyTable(tots_, out);
}

bool ConflictFreeDB::setConflictFreeNIT(NIT& /*out*/, const NIT& /*in*/) {
  MutexLock lock(nitMutex_);
  log_function(kLogError, kNoTag, "[setConflictFreeNIT] Not implemented!");
  return true;
}

bool ConflictFreeDB::setConflictFreeBAT(BAT& /*out*/, const BAT& /*in*/) {
  MutexLock lock(batMutex_);
  log_function(kLogError, kNoTag, "[setConflictFreeBAT] Not implemented!");
  return true;
}

bool ConflictFreeDB::setConflictFreeEIT(EIT& /*out*/, const EIT& /*in*/) {
  RecursiveMutexLock presentFollowing(eitPresentFollowingMutex_);
  RecursiveMutexLock schedule(eitScheduleMutex_);
  log_function(kLogError, kNoTag, "[setConflictFreeEIT] Not implemented!");
  return true;
}

bool ConflictFreeDB::getConflictFreePAT(PAT& out) {
  MutexLock lock(patMutex_);
  return copyTable(pats_, out);
}

bool ConflictFreeDB::getConflictFreeSDT(SDT& out) {
  MutexLock lock(sdtMutex_);
  return copyTable(sdts_, out);
}

bool ConflictFreeDB::getConflictFreeCAT(CAT& out) {
  MutexLock lock(catMutex_);
  return copyTable(cats_, out);
}

bool ConflictFreeDB::getConflictFreeTOT(TOT& out) {
  MutexLock lock(totMutex_);
  return copyTable(tots_, out);
}

bool ConflictFreeDB::getConflictFreeNIT(NIT& out) {
  MutexLock lock(nitMutex_);
  log_function(kLogError, kNoTag, "[getConflictFreeNIT] Not implemented!");
  return copyTable(nits_, out);
}

bool ConflictFreeDB::getConflictFreeBAT(BAT& out) {
  MutexLock lock(batMutex_);
  log_function(kLogError, kNoTag, "[getConflictFreeBAT] Not implemented!");
  return copyTable(bats_, out);
}

bool ConflictFreeDB::getConflictFreePMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmtMutex_);
  const auto stored = pmts_.find(inputSID);
  if (stored == pmts_.end()) {
    return false;
  }
  out = stored->second;
  return true;
}

bool ConflictFreeDB::getOutputPMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmtMutex_);
  const auto stored = pmts_.find(inputSID);
  if (stored != pmts_.end()) {
    const PMT& source = stored->second;
    PMT pmt;
    pmt.programNumber = source.programNumber;
    pmt.version = source.version;
    pmt.currentNext = source.currentNext;
    pmt.pcrPid = source.pcrPid;
    pmt.descriptors = cfDescriptors(source.descriptors, kDropCA, pids_);
    for (const PMTES& stream : source.esList) {
      if (!isCarriedStreamType(stream.streamType)) {
        continue;
      }
      PMTES& copy = pmt.esList.emplace_back();
      copy.streamType = stream.streamType;
      copy.pid = stream.pid;
      copy.descriptors = cfDescriptors(stream.descriptors, kDropCA, pids_);
    }
    out = std::move(pmt);
  }
  pids_.saveConflictFreeDB();
  return stored != pmts_.end();
}

void ConflictFreeDB::restampEITpf(const EITMap& in) {
  RecursiveMutexLock lock(eitPresentFollowingMutex_);
  restampAll(eitPresentFollowing_, in, "getConflictFreeEITpf");
}

void ConflictFreeDB::restampEITsch(const EITMap& in) {
  RecursiveMutexLock lock(eitScheduleMutex_);
  restampAll(eitSchedule_, in, "getConflictFreeEITsch");
}

bool ConflictFreeDB::getConflictFreeEITpf(EITMap& out, const EITMap& in) {
  RecursiveMutexLock lock(eitPresentFollowingMutex_);
  restampEITpf(in);
  copyMentioned(eitPresentFollowing_, in, out);
  return true;
}

bool ConflictFreeDB::getConflictFreeEITsch(EITMap& out, const EITMap& in) {
  RecursiveMutexLock lock(eitScheduleMutex_);
  restampEITsch(in);
  copyMentioned(eitSchedule_, in, out);
  return true;
}

bool ConflictFreeDB::getRestampedEITpf(EIT& out, int32_t serviceId, int32_t tableId) {
  RecursiveMutexLock lock(eitPresentFollowingMutex_);
  return copyEIT(eitPresentFollowing_, serviceId, tableId, out);
}

bool ConflictFreeDB::getRestampedEITsch(EIT& out, int32_t serviceId, int32_t tableId) {
  RecursiveMutexLock lock(eitScheduleMutex_);
  return copyEIT(eitSchedule_, serviceId, tableId, out);
}

void ConflictFreeDB::restampAll(EITMap& store, const EITMap& in, const char* caller) {
  const bool valid = owner_.timeOffsetValid();
  log_function(kLogDebug, kNoTag, "[%s] Ready to apply offset [%s] [%lld]", caller,
               valid ? "yes" : "no", static_cast<long long>(owner_.timeOffset()));
  for (const auto& [serviceId, tables] : in) {
    owner_.resetEITRestartCounter(serviceId);
    for (const auto& [tableId, eit] : tables) {
      const int32_t version = owner_.selectEITVersion(serviceId, tableId);
      restampEIT(store[serviceId][tableId], eit, version);
    }
  }
}

void ConflictFreeDB::restampEIT(EIT& out, const EIT& in, int32_t version) {
  log_function(kLogDebug, kNoTag, "restampEIT: SID [0x%04x] tid [0x%02x] v[%d] nevents [%d]",
               static_cast<unsigned>(in.serviceId), static_cast<unsigned>(in.tableId), in.version,
               static_cast<int>(in.events.size()));
  const int64_t offset = owner_.timeOffset();
  out = in;
  for (EITEvent& event : out.events) {
    event.startTime =
        static_cast<int64_t>(restampDVBTime(static_cast<uint64_t>(event.startTime), offset));
  }
  out.version = version;
}

void ConflictFreeDB::clearConflictFreeDB() {
  const std::scoped_lock lock(patMutex_, sdtMutex_, catMutex_, pmtMutex_, nitMutex_, batMutex_,
                              eitPresentFollowingMutex_, eitScheduleMutex_);
  patMutex_.assertHeld();
  sdtMutex_.assertHeld();
  catMutex_.assertHeld();
  pmtMutex_.assertHeld();
  nitMutex_.assertHeld();
  batMutex_.assertHeld();
  eitPresentFollowingMutex_.assertHeld();
  eitScheduleMutex_.assertHeld();
  pats_.clear();
  sdts_.clear();
  cats_.clear();
  pmts_.clear();
  nits_.clear();
  bats_.clear();
  eitPresentFollowing_.clear();
  eitSchedule_.clear();
}

}  // namespace tevra
