#include "store/eit_versions.h"

#include <utility>

#include "platform/module_utils.h"
#include "store/table_store_files.h"

namespace tevra {
namespace {

constexpr int32_t kVersions = 32;  // version_number has 5 bits: EN 300 468, 5.2.4

}  // namespace

void EITVersions::restoreEITVersions() {
  MutexLock lock(eitVersionMutex_);
  EITTableVersionStoreFile file;
  if (loadEITTableVersionStoreFile(file, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error reading tables from file", mptsIndex_);
  }
  ageEntries(file.versionStores, [this](int32_t serviceId, const auto&) {
    log_function(kLogNotice, kNoTag,
                 "[MPTS%d] %d is erased from the EIT table version store struct", mptsIndex_,
                 serviceId);
  });
  eitVersionStores_ = storedEntries(std::move(file));
}

int32_t EITVersions::selectEITVersion(int32_t serviceId, int32_t tableId) {
  MutexLock lock(eitVersionMutex_);
  auto& versions = eitVersionStores_[serviceId].change().versions;
  const auto previous = versions.find(tableId);
  if (previous == versions.end()) {
    // The line says 0 and the version is 1: docs/contract.md, "Messages".
    log_function(kLogDebug, kNoTag, "No previous EIT restamped [0x%04x/0x%02x] version 0 selected",
                 static_cast<unsigned>(serviceId), static_cast<unsigned>(tableId));
    versions[tableId] = 1;
    return 1;
  }
  previous->second = static_cast<int32_t>((int64_t{previous->second} + 1) % kVersions);
  return previous->second;
}

void EITVersions::resetEITRestartCounter(int32_t serviceId) {
  MutexLock lock(eitVersionMutex_);
  auto& entry = eitVersionStores_[serviceId];
  if (entry->restartCounter != 0) {
    entry.change().restartCounter = 0;
  }
}

void EITVersions::saveEITVersions() {
  log_function(kLogDebug, kNoTag, "[MPTS%d] has to save the new tables in a file", mptsIndex_);
  MutexLock lock(eitVersionMutex_);
  if (saveEITTableVersionStoreFile(eitVersionStores_, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error writing EIT table version in file", mptsIndex_);
  }
}

}  // namespace tevra
