#include "cfdb/conflict_free_db.h"

#include <utility>

#include "cfdb/ca_descriptors.h"
#include "cfdb/dvb_time.h"
#include "cfdb/stream_filter.h"
#include "platform/module_utils.h"

namespace tevra {
namespace {

bool copyEIT(const EITMap& store, int32_t serviceId, int32_t tableId, EIT& out) {
  const auto tables = store.find(serviceId);
  return tables != store.end() && copyTable(tables->second, tableId, out);
}

}  // namespace

ConflictFreeDB::ConflictFreeDB(int32_t chainIndex, TimeOffset& timeOffset, EITVersions& eitVersions)
    : timeOffset_(timeOffset), eitVersions_(eitVersions), pids_(chainIndex) {}

bool ConflictFreeDB::setConflictFreePAT(PAT& out, const PAT& in) {
  MutexLock lock(pats_);
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
  pats_.storeLocked(pat, "Guardo PAT en DB local!");
  const bool stored = pats_.copyLocked(out);
  pids_.saveConflictFreeDB();
  return stored;
}

bool ConflictFreeDB::setConflictFreeSDT(const SDT& in) {
  return sdts_.store(in, "Guardo SDT en DB local!");
}

PMT ConflictFreeDB::makeConflictFreePMT(const PMT& in) {
  PMT pmt;
  pmt.programNumber = in.programNumber;
  pmt.version = in.version;
  pmt.currentNext = in.currentNext;
  pmt.pcrPid = pids_.getConflictFreePID(in.pcrPid);
  pmt.descriptors = cfDescriptors(in.descriptors, pids_);
  pmt.esList.reserve(in.esList.size());
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
    remapped.descriptors = cfDescriptors(stream.descriptors, pids_);
  }
  return pmt;
}

bool ConflictFreeDB::setConflictFreePMT(PMT& out, const PMT& in) {
  MutexLock lock(pmts_);
  PMT pmt = makeConflictFreePMT(in);
  log_function(kLogDebug, kNoTag, "Guardo PMT en DB local! inputSID [0x%04x]",
               static_cast<unsigned>(in.programNumber));
  out = pmt;
  pmts_.tables[in.programNumber] = std::move(pmt);
  pids_.saveConflictFreeDB();
  return true;
}

bool ConflictFreeDB::setConflictFreeCAT(CAT& out, const CAT& in) {
  MutexLock lock(cats_);
  CAT cat = in;
  cat.descriptors = cfDescriptors(in.descriptors, pids_);
  cats_.storeLocked(cat, "Guardo CAT en DB local!");
  return cats_.copyLocked(out);
}

bool ConflictFreeDB::setConflictFreeTOT(TOT& out, const TOT& in) {
  MutexLock lock(tots_);
  tots_.storeLocked(in, "Guardo TOT en DB local!");
  return tots_.copyLocked(out);
}

bool ConflictFreeDB::setConflictFreeNIT(NIT& /*out*/, const NIT& /*in*/) {
  MutexLock lock(nits_);
  log_function(kLogError, kNoTag, "[setConflictFreeNIT] Not implemented!");
  return true;
}

bool ConflictFreeDB::setConflictFreeBAT(BAT& /*out*/, const BAT& /*in*/) {
  MutexLock lock(bats_);
  log_function(kLogError, kNoTag, "[setConflictFreeBAT] Not implemented!");
  return true;
}

bool ConflictFreeDB::setConflictFreeEIT(EIT& /*out*/, const EIT& /*in*/) {
  RecursiveMutexLock presentFollowing(eitPresentFollowing_);
  RecursiveMutexLock schedule(eitSchedule_);
  log_function(kLogError, kNoTag, "[setConflictFreeEIT] Not implemented!");
  return true;
}

bool ConflictFreeDB::getConflictFreePAT(PAT& out) {
  return pats_.copy(out);
}

bool ConflictFreeDB::getConflictFreeSDT(SDT& out) {
  return sdts_.copy(out);
}

bool ConflictFreeDB::getConflictFreeCAT(CAT& out) {
  return cats_.copy(out);
}

bool ConflictFreeDB::getConflictFreeTOT(TOT& out) {
  return tots_.copy(out);
}

bool ConflictFreeDB::getConflictFreeNIT(NIT& out) {
  MutexLock lock(nits_);
  log_function(kLogError, kNoTag, "[getConflictFreeNIT] Not implemented!");
  return nits_.copyLocked(out);
}

bool ConflictFreeDB::getConflictFreeBAT(BAT& out) {
  MutexLock lock(bats_);
  log_function(kLogError, kNoTag, "[getConflictFreeBAT] Not implemented!");
  return bats_.copyLocked(out);
}

bool ConflictFreeDB::getConflictFreePMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmts_);
  return copyTable(pmts_.tables, inputSID, out);
}

bool ConflictFreeDB::getOutputPMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmts_);
  PMT pmt;
  const bool isHeld = copyTable(pmts_.tables, inputSID, pmt);
  if (isHeld) {
    pmt.descriptors = withoutCaDescriptors(std::move(pmt.descriptors));
    for (PMTES& stream : pmt.esList) {
      stream.descriptors = withoutCaDescriptors(std::move(stream.descriptors));
    }
    out = std::move(pmt);
  }
  pids_.saveConflictFreeDB();
  return isHeld;
}

void ConflictFreeDB::restampEITpf(const EITMap& in) {
  RecursiveMutexLock lock(eitPresentFollowing_);
  restampAll(eitPresentFollowing_.tables, in, "getConflictFreeEITpf");
}

void ConflictFreeDB::restampEITsch(const EITMap& in) {
  RecursiveMutexLock lock(eitSchedule_);
  restampAll(eitSchedule_.tables, in, "getConflictFreeEITsch");
}

bool ConflictFreeDB::getConflictFreeEITpf(EITMap& out, const EITMap& in) {
  RecursiveMutexLock lock(eitPresentFollowing_);
  restampEITpf(in);
  copyRestamped(out, in, &ConflictFreeDB::getRestampedEITpf);
  return true;
}

bool ConflictFreeDB::getConflictFreeEITsch(EITMap& out, const EITMap& in) {
  RecursiveMutexLock lock(eitSchedule_);
  restampEITsch(in);
  copyRestamped(out, in, &ConflictFreeDB::getRestampedEITsch);
  return true;
}

bool ConflictFreeDB::getRestampedEITpf(EIT& out, int32_t serviceId, int32_t tableId) {
  RecursiveMutexLock lock(eitPresentFollowing_);
  return copyEIT(eitPresentFollowing_.tables, serviceId, tableId, out);
}

bool ConflictFreeDB::getRestampedEITsch(EIT& out, int32_t serviceId, int32_t tableId) {
  RecursiveMutexLock lock(eitSchedule_);
  return copyEIT(eitSchedule_.tables, serviceId, tableId, out);
}

void ConflictFreeDB::restampAll(EITMap& store, const EITMap& in, const char* caller) {
  const bool valid = timeOffset_.timeOffsetValid();
  log_function(kLogDebug, kNoTag, "[%s] Ready to apply offset [%s] [%lld]", caller,
               valid ? "yes" : "no", static_cast<long long>(timeOffset_.timeOffset()));
  EIT restamped;  // of the one before, but for its memory
  for (const auto& [serviceId, tables] : in) {
    eitVersions_.resetEITRestartCounter(serviceId);
    for (const auto& [tableId, eit] : tables) {
      const int32_t version = eitVersions_.selectEITVersion(serviceId, tableId);
      restampEIT(restamped, eit, version);
      swap(store[serviceId][tableId], restamped);  // whole or not at all
    }
  }
}

void ConflictFreeDB::restampEIT(EIT& out, const EIT& in, int32_t version) {
  log_function(kLogDebug, kNoTag, "restampEIT: SID [0x%04x] tid [0x%02x] v[%d] nevents [%d]",
               static_cast<unsigned>(in.serviceId), static_cast<unsigned>(in.tableId), in.version,
               static_cast<int>(in.events.size()));
  const int64_t offset = timeOffset_.timeOffset();
  out = in;
  for (EITEvent& event : out.events) {
    event.startTime =
        static_cast<int64_t>(restampDVBTime(static_cast<uint64_t>(event.startTime), offset));
  }
  out.version = version;
}

void ConflictFreeDB::copyRestamped(EITMap& out, const EITMap& in, GetRestamped get) {
  out.clear();
  for (const auto& [serviceId, tables] : in) {
    for (const auto& [tableId, ignored] : tables) {
      (void)(this->*get)(out[serviceId][tableId], serviceId, tableId);  // restamped just now
    }
  }
}

void ConflictFreeDB::clearConflictFreeDB() {
  clearTogether(pats_, sdts_, cats_, pmts_, nits_, bats_, eitPresentFollowing_, eitSchedule_);
}

}  // namespace tevra
