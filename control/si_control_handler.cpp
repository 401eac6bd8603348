#include "control/si_control_handler.h"

#include <new>

#include "control/mpts_index.h"
#include "platform/module_utils.h"
#include "synth/output_data.h"

namespace tevra {
namespace {

constexpr uint16_t kFirstNotificationPort = 9256;

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

}  // namespace

SIControlSrvHandler::SIControlSrvHandler(int32_t mptsIndex)
    : SIControlSrvHandler(mptsIndex, notificationPort(mptsIndex)) {}

SIControlSrvHandler::SIControlSrvHandler(int32_t mptsIndex, uint16_t port)
    : tableStores_(mptsIndex), eitVersions_(mptsIndex) {
  log_function(kLogWarning, kNoTag, "[MPTS%d] notifying to port [%d]", mptsIndex, port);
  (void)setNotificationPort(notifyPort_, port);     // a refused port is logged there and
  (void)setNotificationPort(startupTarget_, port);  // by every notification
  conflictFreeDatabase_ = new ConflictFreeDB(mptsIndex, timeOffset_, eitVersions_);
  tableStores_.restoreTableStores();
  eitVersions_.restoreEITVersions();
  (void)requestConfiguration(startupTarget_);
}

SIControlSrvHandler::~SIControlSrvHandler() = default;

void SIControlSrvHandler::getSIData(SIService& result) {
  log_function(kLogDebug, kNoTag, "getSIData");
  result = SIService();
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
  conflictFreeDatabase_->clearConflictFreeDB();
  timeOffset_.resetTimeOffset();
}

void SIControlSrvHandler::setPAT(const PAT& pat) {
  inputDatabase_.setInputPAT(pat);
  PAT conflictFree;
  conflictFreeDatabase_->setConflictFreePAT(conflictFree, pat);
  (void)notifyPAT(notifyPort_, conflictFree);
}

void SIControlSrvHandler::setSDT(const SDT& sdt) {
  inputDatabase_.setInputSDT(sdt);
  conflictFreeDatabase_->setConflictFreeSDT(sdt);
  (void)notifySDT(notifyPort_, sdt);
}

void SIControlSrvHandler::setPMT(const PMT& pmt) {
  inputDatabase_.setInputPMT(pmt);
  PMT conflictFree;
  conflictFreeDatabase_->setConflictFreePMT(conflictFree, pmt);
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
  conflictFreeDatabase_->setConflictFreeCAT(conflictFree, cat);
  (void)notifyCAT(notifyPort_, conflictFree);
}

/** Where memory runs out on the way, MainTask may have got some of the versions: unsaved they would
 * be handed out again. */
template <class Restamp>
auto SIControlSrvHandler::savedIfItFails(Restamp restamp) {
  try {
    return restamp();
  } catch (const std::bad_alloc&) {
    eitVersions_.saveEITVersions();
    throw;
  }
}

void SIControlSrvHandler::setTOT(const TOT& tot) {
  patience_ = {};
  inputDatabase_.setInputTOT(tot);
  TOT conflictFree;
  conflictFreeDatabase_->setConflictFreeTOT(conflictFree, tot);
  if (timeOffset_.updateTimeOffset(tot)) {
    const bool restamped = savedIfItFails([this] { return restampStoredEITs(); });
    timeOffset_.noteRestamped();
    if (restamped) {
      eitVersions_.saveEITVersions();
    }
  }
  (void)notifyTOT(notifyPort_, conflictFree, patience_);
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
  if (timeOffset_.timeOffsetValid()) {
    savedIfItFails([&] { restampPresentFollowing(eits); });
    eitVersions_.saveEITVersions();
  }
}

void SIControlSrvHandler::setEITSchedule(const EITMap& eits) {
  log_function(kLogDebug, kNoTag, "setEITSchedule");
  patience_ = {};
  inputDatabase_.setInputEITsch(eits);
  if (timeOffset_.timeOffsetValid()) {
    savedIfItFails([&] { restampSchedule(eits); });
    eitVersions_.saveEITVersions();
  }
}

void SIControlSrvHandler::restampPresentFollowing(const EITMap& eits) {
  conflictFreeDatabase_->restampEITpf(eits);
  notifyRestamped(eits, &ConflictFreeDB::getRestampedEITpf, notifyEITPresentFollowing);
}

void SIControlSrvHandler::restampSchedule(const EITMap& eits) {
  conflictFreeDatabase_->restampEITsch(eits);
  notifyRestamped(eits, &ConflictFreeDB::getRestampedEITsch, notifyEITSchedule);
}

void SIControlSrvHandler::notifyRestamped(const EITMap& eits, GetRestamped get, Notify notify) {
  EIT restamped;  // one after the other in the same memory: all together may take megabytes
  for (const auto& [serviceId, tables] : eits) {
    for (const auto& [tableId, received] : tables) {
      if ((conflictFreeDatabase_->*get)(restamped, serviceId, tableId)) {
        (void)notify(notifyPort_, restamped, patience_);
      }
    }
  }
}

void SIControlSrvHandler::getSrvOutputData(std::map<int32_t, SPTSConfiguration>& answer,
                                           const SrvOutputRequest& request) {
  OutputData(*conflictFreeDatabase_, tableStores_).getSrvOutputData(answer, request);
}

bool SIControlSrvHandler::notifyNIM(int32_t value) {
  return tevra::notifyNIM(startupTarget_, value);
}

}  // namespace tevra
