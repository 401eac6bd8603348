#include "control/si_control_handler.h"

#include <cstdlib>

#include "cfdb/dvb_time.h"
#include "control/mpts_index.h"
#include "platform/module_utils.h"
#include "store/table_store_files.h"
#include "synth/output_data.h"

namespace tevra {
namespace {

constexpr uint16_t kFirstNotificationPort = 9256;
constexpr int32_t kEITVersions = 32;

/** Differences of under a minute are a steady broadcast clock, not a new offset. */
constexpr int64_t kToleratedOffsetChange = 59;

enum Command : int32_t {
  kReset = 0,
  kFirstUnimplemented = 1,
  kLastUnimplemented = 4,
};

uint16_t notificationPort(int32_t mptsIndex) {
  if (!isMptsIndex(mptsIndex)) {
    log_function(kLogError, kNoTag, "[SIControlSrvHandler] MPTSId not supported [%d]", mptsIndex);
    return 0;
  }
  return static_cast<uint16_t>(kFirstNotificationPort + mptsIndex);
}

/** Only the low 32 bits count, as on the device. */
bool isSameOffset(int64_t a, int64_t b) {
  const auto difference = static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
  return std::llabs(difference) <= kToleratedOffsetChange;
}

}  // namespace

SIControlSrvHandler::SIControlSrvHandler(int32_t mptsIndex) : mptsIndex_(mptsIndex) {
  const uint16_t port = notificationPort(mptsIndex);
  log_function(kLogWarning, kNoTag, "[MPTS%d] notifying to port [%d]", mptsIndex, port);
  (void)setNotificationPort(notifyPort_, port);     // a refused port is logged there and
  (void)setNotificationPort(startupTarget_, port);  // by every notification
  conflictFreeDatabase_ = new ConflictFreeDB(mptsIndex, *this);
  inputDatabase_.clear();
  restoreTableStores();
  restoreEITVersions();
  (void)requestConfiguration(startupTarget_);
}

SIControlSrvHandler::~SIControlSrvHandler() = default;

void SIControlSrvHandler::restoreTableStores() {
  MutexLock lock(tableStoreMutex_);
  if (loadTableStoreFile(myTableStores_, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error reading tables from file", mptsIndex_);
  }
  ageEntries(myTableStores_.tableStores, [this](int32_t, const TableStore& store) {
    log_function(kLogNotice, kNoTag, "[MPTS%d] %d is erased from the table store struct",
                 mptsIndex_, store.pmt.programNumber);
  });
}

void SIControlSrvHandler::restoreEITVersions() {
  MutexLock lock(eitVersionMutex_);
  if (loadEITTableVersionStoreFile(eitVersionStore_, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error reading tables from file", mptsIndex_);
  }
  ageEntries(eitVersionStore_.versionStores, [this](int32_t serviceId, const auto&) {
    log_function(kLogNotice, kNoTag,
                 "[MPTS%d] %d is erased from the EIT table version store struct", mptsIndex_,
                 serviceId);
  });
}

void SIControlSrvHandler::getSIData(SIService& result) {
  log_function(kLogDebug, kNoTag, "getSIData");
  result = siService_;
}

bool SIControlSrvHandler::SISetData(const SIService& data) {
  log_function(kLogDebug, kNoTag, "SISetData string: %s", data.name.c_str());
  return true;
}

bool SIControlSrvHandler::sendCmd(int32_t command) {
  log_function(kLogDebug, kNoTag, "SI sendCmd");
  if (command == kReset) {
    reset();
  } else if (command >= kFirstUnimplemented && command <= kLastUnimplemented) {
    log_function(kLogError, kNoTag, "Comando no implementado.");
  }
  return true;
}

void SIControlSrvHandler::reset() {
  inputDatabase_.clear();
  conflictFreeDatabase()->clearConflictFreeDB();
  MutexLock lock(timeMutex_);
  timeOffset_ = 0;
  timeOffsetValid_ = false;
  timeOffsetPending_ = true;
}

void SIControlSrvHandler::setPAT(const PAT& pat) {
  inputDatabase_.setInputPAT(pat);
  PAT conflictFree;
  conflictFreeDatabase()->setConflictFreePAT(conflictFree, pat);
  (void)notifyPAT(notifyPort_, conflictFree);
}

void SIControlSrvHandler::setSDT(const SDT& sdt) {
  inputDatabase_.setInputSDT(sdt);
  conflictFreeDatabase()->setConflictFreeSDT(sdt);
  (void)notifySDT(notifyPort_, sdt);
}

void SIControlSrvHandler::setPMT(const PMT& pmt) {
  inputDatabase_.setInputPMT(pmt);
  PMT conflictFree;
  conflictFreeDatabase()->setConflictFreePMT(conflictFree, pmt);
  (void)notifyPMT(notifyPort_, conflictFree);
}

bool SIControlSrvHandler::setNIT(const NIT& nit) {
  log_function(kLogError, kNoTag, "setNIT");
  return inputDatabase_.setInputNIT(nit);
}

bool SIControlSrvHandler::setBAT(const BAT& bat) {
  log_function(kLogError, kNoTag, "setBAT");
  return inputDatabase_.setInputBAT(bat);
}

void SIControlSrvHandler::setCAT(const CAT& cat) {
  inputDatabase_.setInputCAT(cat);
  CAT conflictFree;
  conflictFreeDatabase()->setConflictFreeCAT(conflictFree, cat);
  (void)notifyCAT(notifyPort_, conflictFree);
}

void SIControlSrvHandler::setTOT(const TOT& tot) {
  patience_ = {};
  inputDatabase_.setInputTOT(tot);
  TOT conflictFree;
  conflictFreeDatabase()->setConflictFreeTOT(conflictFree, tot);
  if (IsSystemTimeSet() != 0) {
    log_function(kLogWarning, kNoTag, "System time not set. Time offset not calculated!");
  } else if (updateTimeOffset(tot) && restampStoredEITs()) {
    saveEITVersions();
  }
  (void)notifyTOT(notifyPort_, conflictFree, patience_);
}

/** Takes the offset that `tot` gives; true when the stored EITs must be restamped. */
bool SIControlSrvHandler::updateTimeOffset(const TOT& tot) {
  const int64_t offset = dvbTimeDifference(GetUTCTime(), static_cast<uint64_t>(tot.utcTime));
  MutexLock lock(timeMutex_);
  bool restamp = timeOffsetPending_;
  if (!isSameOffset(offset, timeOffset_)) {
    log_function(kLogWarning, kNoTag, "DVB to System Time offset set to [%lld] secs",
                 static_cast<long long>(offset));
    timeOffset_ = offset;
    restamp = true;
  }
  timeOffsetValid_ = true;
  timeOffsetPending_ = false;
  return restamp;
}

/** True when there was anything to restamp. */
bool SIControlSrvHandler::restampStoredEITs() {
  EITMap eits;
  const bool presentFollowing = inputDatabase_.getInputEITpf(eits);
  if (presentFollowing) {
    restampPresentFollowing(eits);
  }
  const bool schedule = inputDatabase_.getInputEITsch(eits);
  if (schedule) {
    restampSchedule(eits);
  }
  return presentFollowing || schedule;
}

void SIControlSrvHandler::setEITPresentFollowing(const EITMap& eits) {
  log_function(kLogDebug, kNoTag, "setEITPresentFollowing");
  patience_ = {};
  inputDatabase_.setInputEITpf(eits);
  if (timeOffsetValid()) {
    restampPresentFollowing(eits);
    saveEITVersions();
  }
}

void SIControlSrvHandler::setEITSchedule(const EITMap& eits) {
  log_function(kLogDebug, kNoTag, "setEITSchedule");
  patience_ = {};
  inputDatabase_.setInputEITsch(eits);
  if (timeOffsetValid()) {
    restampSchedule(eits);
    saveEITVersions();
  }
}

void SIControlSrvHandler::restampPresentFollowing(const EITMap& eits) {
  conflictFreeDatabase()->restampEITpf(eits);
  notifyRestamped(eits, &ConflictFreeDB::getRestampedEITpf, notifyEITPresentFollowing);
}

void SIControlSrvHandler::restampSchedule(const EITMap& eits) {
  conflictFreeDatabase()->restampEITsch(eits);
  notifyRestamped(eits, &ConflictFreeDB::getRestampedEITsch, notifyEITSchedule);
}

void SIControlSrvHandler::notifyRestamped(const EITMap& eits, GetRestamped get, Notify notify) {
  EIT restamped;  // one after the other in the same memory: all together may take megabytes
  for (const auto& [serviceId, tables] : eits) {
    for (const auto& [tableId, received] : tables) {
      if ((conflictFreeDatabase()->*get)(restamped, serviceId, tableId)) {
        (void)notify(notifyPort_, restamped, patience_);
      }
    }
  }
}

void SIControlSrvHandler::saveEITVersions() {
  log_function(kLogDebug, kNoTag, "[MPTS%d] has to save the new tables in a file", mptsIndex_);
  MutexLock lock(eitVersionMutex_);
  if (saveEITTableVersionStoreFile(eitVersionStore_, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error writing EIT table version in file", mptsIndex_);
  }
}

void SIControlSrvHandler::getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                                           const SrvOutputRequest& request) {
  OutputData(*conflictFreeDatabase(), *this).getSrvOutputData(answer, request);
}

bool SIControlSrvHandler::notifyNIM(int32_t value) {
  return tevra::notifyNIM(startupTarget_, value);
}

int64_t SIControlSrvHandler::timeOffset() {
  MutexLock lock(timeMutex_);
  return timeOffset_;
}

bool SIControlSrvHandler::timeOffsetValid() {
  MutexLock lock(timeMutex_);
  return timeOffsetValid_;
}

int32_t SIControlSrvHandler::selectEITVersion(int32_t serviceId, int32_t tableId) {
  MutexLock lock(eitVersionMutex_);
  auto& versions = eitVersionStore_.versionStores[serviceId].versions;
  const auto previous = versions.find(tableId);
  if (previous == versions.end()) {
    // The line says 0 and the version is 1: docs/contract.md, "Messages".
    log_function(kLogDebug, kNoTag, "No previous EIT restamped [0x%04x/0x%02x] version 0 selected",
                 static_cast<unsigned>(serviceId), static_cast<unsigned>(tableId));
    versions[tableId] = 1;
    return 1;
  }
  previous->second = static_cast<int32_t>((int64_t{previous->second} + 1) % kEITVersions);
  return previous->second;
}

void SIControlSrvHandler::resetEITRestartCounter(int32_t serviceId) {
  MutexLock lock(eitVersionMutex_);
  eitVersionStore_.versionStores[serviceId].restartCounter = 0;
}

TableStore& SIControlSrvHandler::tableStore(int32_t inputProgramNumber) {
  return myTableStores_.tableStores[inputProgramNumber];
}

int SIControlSrvHandler::writeTableStores() {
  MutexLock lock(tableStoreMutex_);
  return saveTableStoreFile(myTableStores_, mptsIndex_);
}

}  // namespace tevra
