#pragma once

#include <cstddef>
#include <list>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tools/changes/change.h"
#include "tools/listen/notification.h"

namespace tevra::tools {

/** What a table brings against the last one of the same kind and ids. */
struct TableNews {
  std::optional<SiTable> last;  ///< nothing: it is the first, or the last one was forgotten
  Changes changes;              ///< none without a last one
};

/**
 * The last table of each kind and ids. Bounded: when it holds too much it forgets the tables that
 * have not come for longest.
 */
class TableHistory {
 public:
  ///@{
  /**
   * Tables, and their bytes by memoryOf(): more than a multiplex with hundreds of services and a
   * schedule of eight days needs.
   */
  static constexpr size_t kMostTables = 16384;
  static constexpr size_t kMostBytes = size_t{64} * 1024 * 1024;
  ///@}

  /** A table that alone takes more than `mostBytes` is compared, then forgotten with all others. */
  explicit TableHistory(size_t mostTables = kMostTables, size_t mostBytes = kMostBytes)
      : mostTables_(mostTables), mostBytes_(mostBytes) {}

  /** Compares a notification's table with the last one and keeps it in that one's place. */
  [[nodiscard]] TableNews add(const NotifiedTable& notified);

  /** How many tables it holds. */
  [[nodiscard]] size_t size() const { return places_.size(); }

 private:
  using Key = std::pair<TableKind, std::vector<int>>;  // kind and ids
  struct Entry {
    Key key;
    SiTable table;
    size_t bytes;
  };

  std::optional<SiTable> take(const Key& key);
  void forgetOldest();

  const size_t mostTables_;
  const size_t mostBytes_;
  std::list<Entry> entries_;  // the newest first
  std::map<Key, std::list<Entry>::iterator> places_;
  size_t bytes_ = 0;
};

}  // namespace tevra::tools
