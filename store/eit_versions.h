#pragma once

#include <cstdint>

#include "platform/mutex.h"
#include "store/stored_entries.h"

namespace tevra {

/** The EIT version last handed out for each service and table id, and their file. Callable from any
 * thread; every operation takes the lock once. */
class EITVersions {
 public:
  /** Empty; 0 to 3, the index is part of the file's name. */
  explicit EITVersions(int32_t mptsIndex) : mptsIndex_(mptsIndex) {}

  /** Loads the file and ages its entries; what cannot be read is logged at level 3. Once, at start.
   */
  void restoreEITVersions() EXCLUDES(eitVersionMutex_);

  /** The next version of a sub-table, remembered as handed out: 1 for one that is new, logged at
   * level 7, else one more than the last, modulo 32. */
  [[nodiscard]] int32_t selectEITVersion(int32_t serviceId, int32_t tableId)
      EXCLUDES(eitVersionMutex_);

  /** The service is still broadcast: its versions must not age out at the next start. */
  void resetEITRestartCounter(int32_t serviceId) EXCLUDES(eitVersionMutex_);

  /** Writes all entries. A failure is logged at level 3 and has no other consequence. */
  void saveEITVersions() EXCLUDES(eitVersionMutex_);

 private:
  const int32_t mptsIndex_;
  Mutex eitVersionMutex_;
  StoredEITVersionsMap eitVersionStores_ GUARDED_BY(eitVersionMutex_);
};

}  // namespace tevra
