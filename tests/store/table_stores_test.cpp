#include "store/table_stores.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "tests/fakes/fake_platform.h"
#include "tests/store/store_files.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::Key;

class TableStoresTest : public fake::PlatformTest {
 protected:
  static void saveFile(const std::map<int32_t, TableStore>& entries) {
    TableStoreFile file;
    file.tableStores = entries;
    EXPECT_EQ(save(file, 2), 0);
    fake::clearLog();
  }

  static std::map<int32_t, TableStore> saved() {
    TableStoreFile file;
    EXPECT_EQ(loadTableStoreFile(file, 2), 0);
    return file.tableStores;
  }

  static TableStore entry(int32_t restartCounter, int32_t programNumber) {
    TableStore store;
    store.restartCounter = restartCounter;
    store.pmt.programNumber = programNumber;
    return store;
  }

  /** Of the PAT of an entry. */
  void storeVersion(int32_t inputProgramNumber, int32_t version) {
    PAT pat;
    pat.version = version;
    stores_.tableStore(inputProgramNumber).replace(&TableStore::pat, pat);
  }

  TableStores stores_{2};
};

TEST_F(TableStoresTest, AnEntryIsMadeTheFirstTimeAndStays) {
  const StoredTables& store = stores_.tableStore(3401);
  EXPECT_EQ(*store, TableStore());
  for (int32_t other = 0; other < 100; ++other) {
    (void)stores_.tableStore(other);
  }
  EXPECT_EQ(&stores_.tableStore(3401), &store);
}

TEST_F(TableStoresTest, AllAreSavedAndRestored) {
  storeVersion(1, 7);
  storeVersion(-2, 8);
  stores_.saveTableStores();
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] has to save the new tables in a file"}));
  TableStores restarted(2);
  restarted.restoreTableStores();
  EXPECT_EQ(restarted.tableStore(1)->pat.version, 7);
  EXPECT_EQ(restarted.tableStore(-2)->pat.version, 8);
}

TEST_F(TableStoresTest, AreAgedWhenTheyAreRestored) {
  saveFile({{1, entry(3, 1201)}, {2, entry(4, 1202)}});
  stores_.restoreTableStores();
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] Recovering saved DVB tables"},
                          LogLine{5, "", "[MPTS2] 1202 is erased from the table store struct"}));
  stores_.saveTableStores();
  EXPECT_THAT(saved(), ElementsAre(Key(1)));
  EXPECT_EQ(saved().at(1), entry(4, 1201));
}

TEST_F(TableStoresTest, OfACutFileAreAgedAllTheSame) {
  saveFile({{1, entry(4, 1201)}, {2, entry(2, 1202)}});
  const std::string file = path("Tornel/TableStoreFile2");
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 40);
  stores_.restoreTableStores();
  EXPECT_THAT(fake::logLines(5),
              ElementsAre(LogLine{3, "", "[MPTS2] Error reading file: " + file},
                          LogLine{3, "", "[MPTS2] Error reading tables from file"},
                          LogLine{5, "", "[MPTS2] 1201 is erased from the table store struct"}));
  EXPECT_EQ(stores_.tableStore(1)->pmt.programNumber, 0);
  EXPECT_EQ(stores_.tableStore(2)->restartCounter, 3);
}

TEST_F(TableStoresTest, ThatAreMissingStartAnew) {
  stores_.restoreTableStores();
  EXPECT_THAT(
      fake::logLines(3),
      ElementsAre(LogLine{3, "", "[MPTS2] Error reading file: " + path("Tornel/TableStoreFile2")},
                  LogLine{3, "", "[MPTS2] Error reading tables from file"}));
  EXPECT_EQ(*stores_.tableStore(1), TableStore());
}

TEST_F(TableStoresTest, ThatCannotBeSavedAreAnErrorAndKept) {
  storeVersion(1, 7);
  fake::platform().createDirectoryResult = 1;
  stores_.saveTableStores();
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] has to save the new tables in a file"},
                          LogLine{3, "", "[MPTS2] Could not create directory: " + path("Tornel")},
                          LogLine{3, "", "[MPTS2] Error writing tables in file"}));
  fake::platform().createDirectoryResult = 0;
  stores_.saveTableStores();
  EXPECT_EQ(saved().at(1).pat.version, 7);
}

}  // namespace
}  // namespace tevra::test
