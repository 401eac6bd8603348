#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>
#include <type_traits>

#include "store/table_store_files.h"
#include "tests/records/sample_records.h"

/** The records that survive a restart, so that one test can serve all of them. */
namespace tevra::test {

using RecordFiles = ::testing::Types<TableStoreFile, EITTableVersionStoreFile, PIDRemap>;

/** Those that hold entries which age, in the directory of their own. */
using StoreFiles = ::testing::Types<TableStoreFile, EITTableVersionStoreFile>;

/** As a mapping is saved, it is kept. */
inline const PIDRemap& storedEntries(const PIDRemap& record) {
  return record;
}
using tevra::storedEntries;

inline int save(const TableStoreFile& record, int32_t mpts) {
  return saveTableStoreFile(storedEntries(record), mpts);
}
inline int save(const EITTableVersionStoreFile& record, int32_t mpts) {
  return saveEITTableVersionStoreFile(storedEntries(record), mpts);
}
inline int load(TableStoreFile& record, int32_t mpts) {
  return loadTableStoreFile(record, mpts);
}
inline int load(EITTableVersionStoreFile& record, int32_t mpts) {
  return loadEITTableVersionStoreFile(record, mpts);
}

/** Below the configuration root. */
template <class Record>
std::string nameOf(int32_t mpts) {
  return std::string("Tornel/") + Members<Record>::kName + std::to_string(mpts);
}

/** The map that is all that the file holds, or a mapping's first. */
template <class Record>
auto& entriesOf(Record& record) {
  constexpr size_t kMap = std::is_same_v<Record, PIDRemap> ? 1 : 0;
  return record.*std::get<kMap>(Members<Record>::kAll);
}

/** Several times what is held back while a file is written. */
template <class Record>
Record largeSample() {
  Record record = sample<Record>();
  const auto entry = entriesOf(record).begin()->second;
  for (int32_t key = 0; key < 20000; ++key) {
    entriesOf(record)[key] = entry;
  }
  return record;
}

}  // namespace tevra::test
