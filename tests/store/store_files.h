#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <tuple>

#include "store/table_store_files.h"
#include "tests/records/sample_records.h"

/** The two files of the store, so that one test can serve both. */
namespace tevra::test {

using StoreFiles = ::testing::Types<TableStoreFile, EITTableVersionStoreFile>;

inline int save(const TableStoreFile& record, int32_t mpts) {
  return saveTableStoreFile(record, mpts);
}
inline int save(const EITTableVersionStoreFile& record, int32_t mpts) {
  return saveEITTableVersionStoreFile(record, mpts);
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

/** The map that is all that the file holds. */
template <class Record>
auto& entriesOf(Record& record) {
  return record.*std::get<0>(Members<Record>::kAll);
}

/** A hundred entries, which take several times what a buffered transport holds back. */
template <class Record>
Record largeSample() {
  Record record = sample<Record>();
  const auto entry = entriesOf(record).begin()->second;
  for (int32_t key = 0; key < 100; ++key) {
    entriesOf(record)[key] = entry;
  }
  return record;
}

}  // namespace tevra::test
