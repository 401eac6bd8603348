#include "store/table_store_files.h"

#include <array>
#include <climits>
#include <cstdio>
#include <new>

#include "platform/configuration_root.h"
#include "platform/module_utils.h"
#include "store/record_file.h"

namespace tevra {
namespace {

constexpr mode_t kDirectoryMode = 0755;
constexpr const char* kTableStoreFile = "TableStoreFile";
constexpr const char* kEITVersionFile = "EITTableVersionStoreFile";

std::string directory() {
  return configurationRoot() + "/Tornel";
}

std::string filePath(const char* name, int32_t mptsIndex) {
  return directory() + "/" + name + std::to_string(mptsIndex);
}

void logReason(int32_t mptsIndex, const std::string& reason) {
  log_function(kLogDebug, kNoTag, "[MPTS%d] Reason: %s", mptsIndex, reason.c_str());
}

template <class Record>
int save(const char* name, const Record& record, int32_t mptsIndex) try {
  if (createDirectory(directory().c_str(), kDirectoryMode) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Could not create directory: %s", mptsIndex,
                 directory().c_str());
    return 1;
  }
  const std::string path = filePath(name, mptsIndex);
  std::string reason;
  if (writeRecordToFile(path, record, &reason) != kRecordFileDone) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error writing file: %s", mptsIndex, path.c_str());
    logReason(mptsIndex, reason);
    return 1;
  }
  return 0;
} catch (const std::bad_alloc&) {  // for one of the paths
  std::array<char, PATH_MAX> path{};
  (void)std::snprintf(path.data(), path.size(), "%s/Tornel/%s%d", configurationRoot().c_str(), name,
                      mptsIndex);
  log_function(kLogError, kNoTag, "[MPTS%d] Error writing file: %s", mptsIndex, path.data());
  return 1;
}

template <class Record>
int load(const char* name, Record& record, int32_t mptsIndex) {
  const std::string path = filePath(name, mptsIndex);
  std::string reason;
  if (readRecordFromFile(path, record, &reason) != kRecordFileDone) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error reading file: %s", mptsIndex, path.c_str());
    logReason(mptsIndex, reason);
    return 1;
  }
  return 0;
}

}  // namespace

int saveTableStoreFile(const StoredTablesMap& stores, int32_t mptsIndex) {
  return save(kTableStoreFile, stores, mptsIndex);
}

int saveEITTableVersionStoreFile(const StoredEITVersionsMap& stores, int32_t mptsIndex) {
  return save(kEITVersionFile, stores, mptsIndex);
}

int loadTableStoreFile(TableStoreFile& record, int32_t mptsIndex) {
  if (load(kTableStoreFile, record, mptsIndex) != 0) {
    return 1;
  }
  log_function(kLogDebug, kNoTag, "[MPTS%d] Recovering saved DVB tables", mptsIndex);
  return 0;
}

int loadEITTableVersionStoreFile(EITTableVersionStoreFile& record, int32_t mptsIndex) {
  if (load(kEITVersionFile, record, mptsIndex) != 0) {
    return 1;
  }
  log_function(kLogDebug, kNoTag, "[MPTS%d] Recovering saved EIT table versions", mptsIndex);
  return 0;
}

}  // namespace tevra
