#pragma once

#include <cstdint>
#include <map>
#include <mutex>
#include <vector>

#include "platform/module_utils.h"
#include "platform/mutex.h"

namespace tevra {

/** All that a database holds of one kind of table. It is itself the lock to hold meanwhile. */
template <class Tables, class Lock = Mutex>
class GuardedTables : public Lock {
 public:
  Tables tables GUARDED_BY(this);  ///< a container
};

/** Holds the last table of a kind: no element before the first, never more than one. */
template <class Table>
class TableSlot : public GuardedTables<std::vector<Table>> {
 public:
  /**
   * Logs `line` at level 7, empties the slot, then appends a copy: a copy that fails leaves the
   * slot empty.
   */
  void storeLocked(const Table& table, const char* line) REQUIRES(this) {
    log_function(kLogDebug, kNoTag, "%s", line);
    this->tables.clear();
    this->tables.push_back(table);
  }

  /** Copies the table to `out`; false and `out` untouched when there is none. */
  [[nodiscard]] bool copyLocked(Table& out) const REQUIRES(this) {
    if (this->tables.empty()) {
      return false;
    }
    out = this->tables.back();
    return true;
  }

  /** As storeLocked. Always true. */
  bool store(const Table& table, const char* line) EXCLUDES(this) {
    MutexLock lock(*this);
    storeLocked(table, line);
    return true;
  }

  /** As copyLocked. */
  [[nodiscard]] bool copy(Table& out) EXCLUDES(this) {
    MutexLock lock(*this);
    return copyLocked(out);
  }
};

/** Copies the table under `key` to `out`; false and `out` untouched when there is none. */
template <class Table>
[[nodiscard]] bool copyTable(const std::map<int32_t, Table>& tables, int32_t key, Table& out) {
  const auto found = tables.find(key);
  if (found == tables.end()) {
    return false;
  }
  out = found->second;
  return true;
}

/** Empties all of `kinds`, the locks of which it takes at once, with deadlock avoidance. */
template <class... Kinds>
void clearTogether(Kinds&... kinds) {
  const std::scoped_lock lock(kinds...);
  (kinds.assertHeld(), ...);
  (kinds.tables.clear(), ...);
}

}  // namespace tevra
