#include "store/stored_entries.h"

namespace tevra {
namespace {

template <class Stored, class Record>
std::map<int32_t, Stored> stored(std::map<int32_t, Record> records) {
  std::map<int32_t, Stored> entries;
  for (auto& [key, record] : records) {
    entries.emplace_hint(entries.end(), key, Stored(std::move(record)));
  }
  return entries;
}

}  // namespace

StoredTablesMap storedEntries(TableStoreFile file) {
  return stored<StoredTables>(std::move(file.tableStores));
}

StoredEITVersionsMap storedEntries(EITTableVersionStoreFile file) {
  return stored<KeptEntry<EITTableVersionStore>>(std::move(file.versionStores));
}

}  // namespace tevra
