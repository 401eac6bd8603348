#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "store/table_store_files.h"
#include "store/table_stores.h"
#include "tests/support/sync_recorder.h"

namespace tevra::test {

/** The table stores of MPTS 2, and what lies in their file. */
class SavedTableStores : public TableStores {
 public:
  SavedTableStores() : TableStores(kMptsIndex) { clearSyncCalls(); }

  /** How often they have been saved. */
  [[nodiscard]] static std::ptrdiff_t saves() {
    const std::vector<SyncCall> calls = syncCalls();
    return std::count_if(calls.begin(), calls.end(), [](const SyncCall& call) {
      return call.what == SyncCall::Of::Everything;
    });
  }

  /** The entries in the file; none without one. */
  [[nodiscard]] static std::map<int32_t, TableStore> saved() {
    TableStoreFile file;
    (void)loadTableStoreFile(file, kMptsIndex);  // says that it is missing
    return file.tableStores;
  }

 private:
  static constexpr int32_t kMptsIndex = 2;
};

}  // namespace tevra::test
