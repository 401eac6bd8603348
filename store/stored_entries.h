#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <type_traits>
#include <utility>

#include "records/records.h"
#include "store/kept_entry.h"
#include "store/kept_packets.h"

namespace tevra {

/** The tables last handed out for an input service, with what has been made of them. */
class StoredTables {
 public:
  /** None have been handed out. */
  StoredTables() = default;

  /** Of which nothing has been made. */
  explicit StoredTables(TableStore tables) : entry_(std::move(tables)) {}

  ///@{
  /** The tables. */
  [[nodiscard]] const TableStore& operator*() const { return *entry_; }
  [[nodiscard]] const TableStore* operator->() const { return &*entry_; }
  ///@}

  /** Replaces one of them; its packets are to be replaced with it. */
  template <class Table>
  void replace(Table TableStore::*member, Table table) noexcept {
    static_assert(std::is_nothrow_move_assignable_v<Table>);
    entry_.change().*member = std::move(table);
  }

  /** As KeptEntry::text. */
  [[nodiscard]] const std::string& text() const { return entry_.text(); }

  ///@{
  /** The packets of each table. */
  KeptPackets patPackets;
  KeptPackets sdtPackets;
  KeptPackets pmtPackets;
  ///@}

 private:
  KeptEntry<TableStore> entry_;
};

///@{
/** What the two files of the stores hold: by input programme, and by service. */
using StoredTablesMap = std::map<int32_t, StoredTables>;
using StoredEITVersionsMap = std::map<int32_t, KeptEntry<EITTableVersionStore>>;
///@}

///@{
/** The entries of a file, as they were read. */
[[nodiscard]] StoredTablesMap storedEntries(TableStoreFile file);
[[nodiscard]] StoredEITVersionsMap storedEntries(EITTableVersionStoreFile file);
///@}

}  // namespace tevra
