#include "inputdb/input_table_db.h"

#include <mutex>

#include "platform/module_utils.h"

namespace tevra {
namespace {

void mergeEITs(EITMap& held, const EITMap& eits, const char* setter) {
  for (const auto& [serviceId, tables] : eits) {
    for (const auto& [tableId, eit] : tables) {
      log_function(kLogDebug, kNoTag, "%s: SID [0x%04x] tid [0x%02x] v[%d] nevents [%d]", setter,
                   static_cast<unsigned>(eit.serviceId), static_cast<unsigned>(eit.tableId),
                   eit.version, static_cast<int>(eit.events.size()));
      held[serviceId][tableId] = eit;
    }
  }
}

bool copyEITs(const EITMap& held, EITMap& out) {
  out.clear();
  if (held.empty()) {
    return false;
  }
  out = held;
  return true;
}

}  // namespace

InputTableDB::InputTableDB() {
  clear();
}

bool InputTableDB::setInputPAT(const PAT& pat) {
  MutexLock lock(patMutex_);
  log_function(kLogDebug, kNoTag, "Guardo PAT en DB local!");
  replaceTable(pats_, pat);
  return true;
}

bool InputTableDB::setInputSDT(const SDT& sdt) {
  MutexLock lock(sdtMutex_);
  log_function(kLogDebug, kNoTag, "Guardo SDT en DB local!");
  replaceTable(sdts_, sdt);
  return true;
}

bool InputTableDB::setInputCAT(const CAT& cat) {
  MutexLock lock(catMutex_);
  log_function(kLogDebug, kNoTag, "Guardo CAT en DB local!");
  replaceTable(cats_, cat);
  return true;
}

bool InputTableDB::setInputNIT(const NIT& nit) {
  MutexLock lock(nitMutex_);
  log_function(kLogDebug, kNoTag, "Guardo NIT en DB local!");
  replaceTable(nits_, nit);
  return true;
}

bool InputTableDB::setInputBAT(const BAT& bat) {
  MutexLock lock(batMutex_);
  log_function(kLogDebug, kNoTag, "Guardo BAT en DB local!");
  replaceTable(bats_, bat);
  return true;
}

bool InputTableDB::setInputTOT(const TOT& tot) {
  MutexLock lock(totMutex_);
  log_function(kLogDebug, kNoTag, "Guardo TOT en DB local!");
  replaceTable(tots_, tot);
  return true;
}

bool InputTableDB::setInputPMT(const PMT& pmt) {
  MutexLock lock(pmtMutex_);
  log_function(kLogDebug, kNoTag, "Guardo PMT en DB local! inputSID [0x%04x]",
               static_cast<unsigned>(pmt.programNumber));
  pmts_[pmt.programNumber] = pmt;
  return true;
}

bool InputTableDB::setInputEITpf(const EITMap& eits) {
  MutexLock lock(eitPresentFollowingMutex_);
  log_function(kLogDebug, kNoTag, "Guardo EIT pf en DB local!");
  mergeEITs(eitPresentFollowing_, eits, "setInputEITpf");
  return true;
}

bool InputTableDB::setInputEITsch(const EITMap& eits) {
  MutexLock lock(eitScheduleMutex_);
  log_function(kLogDebug, kNoTag, "Guardo EIT sch en DB local!");
  mergeEITs(eitSchedule_, eits, "setInputEITsch");
  return true;
}

bool InputTableDB::getInputPAT(PAT& out) {
  MutexLock lock(patMutex_);
  return copyTable(pats_, out);
}

bool InputTableDB::getInputSDT(SDT& out) {
  MutexLock lock(sdtMutex_);
  return copyTable(sdts_, out);
}

bool InputTableDB::getInputCAT(CAT& out) {
  MutexLock lock(catMutex_);
  return copyTable(cats_, out);
}

bool InputTableDB::getInputNIT(NIT& out) {
  MutexLock lock(nitMutex_);
  return copyTable(nits_, out);
}

bool InputTableDB::getInputBAT(BAT& out) {
  MutexLock lock(batMutex_);
  return copyTable(bats_, out);
}

bool InputTableDB::getInputTOT(TOT& out) {
  MutexLock lock(totMutex_);
  return copyTable(tots_, out);
}

bool InputTableDB::getInputPMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmtMutex_);
  const auto found = pmts_.find(inputSID);
  if (found == pmts_.end()) {
    return false;
  }
  out = found->second;
  return true;
}

bool InputTableDB::getInputPMTs(std::vector<PMT>& out) {
  MutexLock lock(pmtMutex_);
  for (const auto& [programNumber, pmt] : pmts_) {
    out.push_back(pmt);
  }
  return !pmts_.empty();
}

bool InputTableDB::getInputEITpf(EITMap& out) {
  MutexLock lock(eitPresentFollowingMutex_);
  return copyEITs(eitPresentFollowing_, out);
}

bool InputTableDB::getInputEITsch(EITMap& out) {
  MutexLock lock(eitScheduleMutex_);
  return copyEITs(eitSchedule_, out);
}

void InputTableDB::clear() {
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
