#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "store/table_store_files.h"

namespace tevra::test {
namespace {

using VersionStores = std::map<int32_t, EITTableVersionStore>;
using Counters = std::map<int32_t, int32_t>;

VersionStores storesWith(const Counters& counters) {
  VersionStores stores;
  for (const auto& [key, counter] : counters) {
    stores[key].restartCounter = counter;
  }
  return stores;
}

template <class Entries>
Counters countersOf(const Entries& entries) {
  Counters counters;
  for (const auto& [key, entry] : entries) {
    counters[key] = entry.restartCounter;
  }
  return counters;
}

/** Ages the stores; returns the erased keys with their counters, in the order of erasure. */
template <class Entries>
std::vector<std::pair<int32_t, int32_t>> age(Entries& entries) {
  std::vector<std::pair<int32_t, int32_t>> erased;
  ageEntries(entries, [&](int32_t key, const auto& entry) {
    erased.emplace_back(key, entry.restartCounter);
  });
  return erased;
}

TEST(Ageing, AnEmptyStoreStaysEmpty) {
  VersionStores stores;
  EXPECT_TRUE(age(stores).empty());
  EXPECT_TRUE(stores.empty());
}

TEST(Ageing, ACounterOfAtMostThreeIsRaisedByOne) {
  VersionStores stores = storesWith({{1, 0}, {2, 1}, {3, 2}, {4, 3}});
  EXPECT_TRUE(age(stores).empty());
  EXPECT_EQ(countersOf(stores), (Counters{{1, 1}, {2, 2}, {3, 3}, {4, 4}}));
}

TEST(Ageing, ACounterAboveThreeErasesTheEntry) {
  VersionStores stores = storesWith({{1, 4}, {2, 5}, {3, INT32_MAX}});
  EXPECT_EQ(age(stores),
            (std::vector<std::pair<int32_t, int32_t>>{{1, 4}, {2, 5}, {3, INT32_MAX}}));
  EXPECT_TRUE(stores.empty());
}

TEST(Ageing, TheComparisonIsSigned) {
  VersionStores stores = storesWith({{1, -1}, {2, INT32_MIN}});
  EXPECT_TRUE(age(stores).empty());
  EXPECT_EQ(countersOf(stores), (Counters{{1, 0}, {2, INT32_MIN + 1}}));
}

TEST(Ageing, EntriesAreTakenInKeyOrderAndOnlyTheOldOnesGo) {
  VersionStores stores = storesWith({{9, 4}, {-5, 7}, {3, 3}, {4, 0}, {6, 4}});
  EXPECT_EQ(age(stores), (std::vector<std::pair<int32_t, int32_t>>{{-5, 7}, {6, 4}, {9, 4}}));
  EXPECT_EQ(countersOf(stores), (Counters{{3, 4}, {4, 1}}));
}

TEST(Ageing, AnEntrySurvivesFourStartsAndIsDroppedAtTheFifth) {
  VersionStores stores = storesWith({{1, 0}});
  for (int start = 1; start <= 4; ++start) {
    EXPECT_TRUE(age(stores).empty());
    EXPECT_EQ(countersOf(stores), (Counters{{1, start}}));
  }
  EXPECT_EQ(age(stores).size(), 1U);
  EXPECT_TRUE(stores.empty());
}

TEST(Ageing, ATableStoreIsStillWholeWhenItsEndIsTold) {
  std::map<int32_t, TableStore> stores;
  stores[3401].restartCounter = 4;
  stores[3401].pmt.programNumber = 1201;
  stores[3402].restartCounter = 3;
  std::vector<int32_t> programmes;
  ageEntries(stores, [&](int32_t key, const TableStore& store) {
    EXPECT_EQ(key, 3401);
    EXPECT_EQ(stores.count(key), 1U);
    programmes.push_back(store.pmt.programNumber);
  });
  EXPECT_EQ(programmes, std::vector<int32_t>{1201});
  EXPECT_EQ(countersOf(stores), (Counters{{3402, 4}}));
}

TEST(Ageing, NothingButTheCounterChanges) {
  VersionStores stores;
  stores[1].versions = {{0x4E, 31}, {0x50, 0}};
  EXPECT_TRUE(age(stores).empty());
  EXPECT_EQ(stores[1].versions, (std::map<int32_t, int32_t>{{0x4E, 31}, {0x50, 0}}));
}

}  // namespace
}  // namespace tevra::test
