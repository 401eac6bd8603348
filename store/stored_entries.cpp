#include "store/stored_entries.h"

namespace tevra {
namespace {

template <class Stored, class Record>
std::map<int32_t, Stored> stored(std::map<int32_t, Record> records) {
  std::map<int32_t, Stored> entries;
  while (!records.empty()) {  // one after the other: both maps together take twice the memory
    auto record = records.extract(records.begin());
    entries.emplace_hint(entries.end(), record.key(), Stored(std::move(record.mapped())));
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
