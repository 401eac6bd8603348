#pragma once

#include <cstdint>

#include "platform/mutex.h"
#include "store/stored_entries.h"

namespace tevra {

/**
 * The tables last handed out for each input service, and their file.
 *
 * The lock is the file's: the entries are loaded and aged before there is a server thread and from
 * then on used on that alone.
 */
class TableStores {
 public:
  /** Empty; 0 to 3, the index is part of the file's name. */
  explicit TableStores(int32_t mptsIndex) : mptsIndex_(mptsIndex) {}

  /** Loads the file and ages its entries; what cannot be read is logged at level 3. Once, at start.
   */
  void restoreTableStores() EXCLUDES(tableStoreMutex_);

  /** The entry of an input programme, whichever its output (docs/contract.md, "Versions per input
   * service"), default-constructed the first time. Stays valid. */
  [[nodiscard]] StoredTables& tableStore(int32_t inputProgramNumber);

  /** Writes all entries. A failure is logged at level 3 and has no other consequence. */
  void saveTableStores() EXCLUDES(tableStoreMutex_);

 private:
  const int32_t mptsIndex_;
  Mutex tableStoreMutex_;
  StoredTablesMap myTableStores_;
};

}  // namespace tevra
