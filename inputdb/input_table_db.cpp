#include "inputdb/input_table_db.h"

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

bool InputTableDB::setInputPAT(const PAT& pat) {
  return pats_.store(pat, "Guardo PAT en DB local!");
}

bool InputTableDB::setInputSDT(const SDT& sdt) {
  return sdts_.store(sdt, "Guardo SDT en DB local!");
}

bool InputTableDB::setInputCAT(const CAT& cat) {
  return cats_.store(cat, "Guardo CAT en DB local!");
}

bool InputTableDB::setInputNIT(const NIT& nit) {
  return nits_.store(nit, "Guardo NIT en DB local!");
}

bool InputTableDB::setInputBAT(const BAT& bat) {
  return bats_.store(bat, "Guardo BAT en DB local!");
}

bool InputTableDB::setInputTOT(const TOT& tot) {
  return tots_.store(tot, "Guardo TOT en DB local!");
}

bool InputTableDB::setInputPMT(const PMT& pmt) {
  MutexLock lock(pmts_);
  log_function(kLogDebug, kNoTag, "Guardo PMT en DB local! inputSID [0x%04x]",
               static_cast<unsigned>(pmt.programNumber));
  pmts_.tables[pmt.programNumber] = pmt;
  return true;
}

bool InputTableDB::setInputEITpf(const EITMap& eits) {
  MutexLock lock(eitPresentFollowing_);
  log_function(kLogDebug, kNoTag, "Guardo EIT pf en DB local!");
  mergeEITs(eitPresentFollowing_.tables, eits, "setInputEITpf");
  return true;
}

bool InputTableDB::setInputEITsch(const EITMap& eits) {
  MutexLock lock(eitSchedule_);
  log_function(kLogDebug, kNoTag, "Guardo EIT sch en DB local!");
  mergeEITs(eitSchedule_.tables, eits, "setInputEITsch");
  return true;
}

bool InputTableDB::getInputPAT(PAT& out) {
  return pats_.copy(out);
}

bool InputTableDB::getInputSDT(SDT& out) {
  return sdts_.copy(out);
}

bool InputTableDB::getInputCAT(CAT& out) {
  return cats_.copy(out);
}

bool InputTableDB::getInputNIT(NIT& out) {
  return nits_.copy(out);
}

bool InputTableDB::getInputBAT(BAT& out) {
  return bats_.copy(out);
}

bool InputTableDB::getInputTOT(TOT& out) {
  return tots_.copy(out);
}

bool InputTableDB::getInputPMT(PMT& out, int32_t inputSID) {
  MutexLock lock(pmts_);
  return copyTable(pmts_.tables, inputSID, out);
}

bool InputTableDB::getInputPMTs(std::vector<PMT>& out) {
  MutexLock lock(pmts_);
  for (const auto& [programNumber, pmt] : pmts_.tables) {
    out.push_back(pmt);
  }
  return !pmts_.tables.empty();
}

bool InputTableDB::getInputEITpf(EITMap& out) {
  MutexLock lock(eitPresentFollowing_);
  return copyEITs(eitPresentFollowing_.tables, out);
}

bool InputTableDB::getInputEITsch(EITMap& out) {
  MutexLock lock(eitSchedule_);
  return copyEITs(eitSchedule_.tables, out);
}

void InputTableDB::clear() {
  clearTogether(pats_, sdts_, cats_, pmts_, nits_, bats_, eitPresentFollowing_, eitSchedule_);
}

}  // namespace tevra
