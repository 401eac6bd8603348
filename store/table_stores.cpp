#include "store/table_stores.h"

#include <utility>

#include "platform/module_utils.h"
#include "store/table_store_files.h"

namespace tevra {

void TableStores::restoreTableStores() {
  MutexLock lock(tableStoreMutex_);
  TableStoreFile file;
  if (loadTableStoreFile(file, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error reading tables from file", mptsIndex_);
  }
  ageEntries(file.tableStores, [this](int32_t, const TableStore& store) {
    log_function(kLogNotice, kNoTag, "[MPTS%d] %d is erased from the table store struct",
                 mptsIndex_, store.pmt.programNumber);
  });
  myTableStores_ = storedEntries(std::move(file));
}

StoredTables& TableStores::tableStore(int32_t inputProgramNumber) {
  return myTableStores_[inputProgramNumber];
}

void TableStores::saveTableStores() {
  log_function(kLogDebug, kNoTag, "[MPTS%d] has to save the new tables in a file", mptsIndex_);
  MutexLock lock(tableStoreMutex_);
  if (saveTableStoreFile(myTableStores_, mptsIndex_) != 0) {
    log_function(kLogError, kNoTag, "[MPTS%d] Error writing tables in file", mptsIndex_);
  }
}

}  // namespace tevra
