#pragma once

#include <cstdint>

#include "records/records.h"
#include "store/stored_entries.h"

/**
 * @file
 * The two files per MPTS in which versions survive a restart: `Tornel/TableStoreFile<n>` and
 * `Tornel/EITTableVersionStoreFile<n>` below the configuration root, `<n>` being the MPTS index.
 *
 * Callers hold the mutex that guards the record. All return 0 on success and 1 on failure, which
 * has been logged at level 3, with its reason at level 7. Saving creates the directory with mode
 * 0755 when missing and replaces the whole file.
 */
namespace tevra {

///@{
/** Write the whole store, of what has changed since the last time a text made anew. */
[[nodiscard]] int saveTableStoreFile(const StoredTablesMap& stores, int32_t mptsIndex);
[[nodiscard]] int saveEITTableVersionStoreFile(const StoredEITVersionsMap& stores,
                                               int32_t mptsIndex);
///@}

///@{
/** `record` as readRecordFromFile leaves it. */
[[nodiscard]] int loadTableStoreFile(TableStoreFile& record, int32_t mptsIndex);
[[nodiscard]] int loadEITTableVersionStoreFile(EITTableVersionStoreFile& record, int32_t mptsIndex);
///@}

/** The highest counter with which an entry still survives a start: docs/contract.md, "Restart
 * counters". */
inline constexpr int32_t kMaxRestartCounter = 3;

/**
 * Ages a store at start, in key order: an entry whose restartCounter is at most 3 has it raised by
 * one and stays; any other is erased after `onErase(key, entry)`. So an entry written with counter
 * 0 survives four starts.
 */
template <class Entries, class OnErase>
void ageEntries(Entries& entries, OnErase onErase) {
  for (auto entry = entries.begin(); entry != entries.end();) {
    if (entry->second.restartCounter <= kMaxRestartCounter) {
      ++entry->second.restartCounter;
      ++entry;
    } else {
      onErase(entry->first, entry->second);
      entry = entries.erase(entry);
    }
  }
}

}  // namespace tevra
