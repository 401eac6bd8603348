#include "store/eit_versions.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

#include "store/table_store_files.h"
#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

using fake::LogLine;
using testing::ElementsAre;
using testing::IsEmpty;

class EITVersionsTest : public fake::PlatformTest {
 protected:
  EITVersionsTest() { fake::clearLog(); }

  static void saveFile(const std::map<int32_t, EITTableVersionStore>& entries) {
    EITTableVersionStoreFile file;
    file.versionStores = entries;
    EXPECT_EQ(saveEITTableVersionStoreFile(storedEntries(file), 2), 0);
  }

  std::map<int32_t, EITTableVersionStore> saved() {
    versions_.saveEITVersions();
    EITTableVersionStoreFile file;
    EXPECT_EQ(loadEITTableVersionStoreFile(file, 2), 0);
    return file.versionStores;
  }

  static EITTableVersionStore entry(int32_t restartCounter, std::map<int32_t, int32_t> versions) {
    EITTableVersionStore store;
    store.restartCounter = restartCounter;
    store.versions = std::move(versions);
    return store;
  }

  EITVersions versions_{2};
};

TEST_F(EITVersionsTest, GoFromOneToThirtyOneThenToZeroForEachServiceAndTable) {
  for (int i = 1; i <= 34; ++i) {
    EXPECT_EQ(versions_.selectEITVersion(1, 0x4E), i % 32);
  }
  EXPECT_EQ(versions_.selectEITVersion(1, 0x50), 1);
  EXPECT_EQ(versions_.selectEITVersion(2, 0x4E), 1);
}

TEST_F(EITVersionsTest, ThatAreNewAreSaidToBeZero) {
  (void)versions_.selectEITVersion(3401, 0x4E);
  (void)versions_.selectEITVersion(3401, 0x4E);
  EXPECT_THAT(
      fake::logLines(),
      ElementsAre(LogLine{7, "", "No previous EIT restamped [0x0d49/0x4e] version 0 selected"}));
}

TEST_F(EITVersionsTest, OfADamagedFileGoOnByRemainder) {
  saveFile({{1, entry(0, {{0x50, INT_MAX}, {0x51, -5}, {0x52, INT_MIN}})}});
  versions_.restoreEITVersions();
  EXPECT_EQ(versions_.selectEITVersion(1, 0x50), 0);
  EXPECT_EQ(versions_.selectEITVersion(1, 0x51), -4);
  EXPECT_EQ(versions_.selectEITVersion(1, 0x52), -31);
}

TEST_F(EITVersionsTest, AreAgedWhenTheyAreRestored) {
  saveFile({{1, entry(3, {{0x4E, 6}})}, {2, entry(4, {{0x4E, 7}})}});
  fake::clearLog();
  versions_.restoreEITVersions();
  EXPECT_THAT(
      fake::logLines(),
      ElementsAre(LogLine{7, "", "[MPTS2] Recovering saved EIT table versions"},
                  LogLine{5, "", "[MPTS2] 2 is erased from the EIT table version store struct"}));
  EXPECT_EQ(versions_.selectEITVersion(1, 0x4E), 7);
  EXPECT_EQ(versions_.selectEITVersion(2, 0x4E), 1);
  EXPECT_EQ(saved().at(1).restartCounter, 4);
}

TEST_F(EITVersionsTest, OfACutFileAreAgedAllTheSame) {
  saveFile({{1, entry(4, {{0x4E, 6}})}, {2, entry(3, {{0x4E, 7}})}});
  fake::clearLog();
  const std::string file = path("Tornel/EITTableVersionStoreFile2");
  std::filesystem::resize_file(file, std::filesystem::file_size(file) - 2);
  versions_.restoreEITVersions();
  EXPECT_THAT(
      fake::logLines(5),
      ElementsAre(LogLine{3, "", "[MPTS2] Error reading file: " + file},
                  LogLine{3, "", "[MPTS2] Error reading tables from file"},
                  LogLine{5, "", "[MPTS2] 1 is erased from the EIT table version store struct"}));
  EXPECT_EQ(saved().at(2).restartCounter, 4);
}

TEST_F(EITVersionsTest, OfAServiceThatIsBroadcastDoNotAge) {
  saveFile({{1, entry(3, {{0x4E, 6}})}});
  versions_.restoreEITVersions();
  versions_.resetEITRestartCounter(1);
  versions_.resetEITRestartCounter(5);
  const auto entries = saved();
  EXPECT_EQ(entries.at(1), entry(0, {{0x4E, 6}}));
  EXPECT_EQ(entries.at(5), entry(0, {}));
}

TEST_F(EITVersionsTest, ThatAreMissingStartAnew) {
  versions_.restoreEITVersions();
  EXPECT_THAT(
      fake::logLines(3),
      ElementsAre(
          LogLine{3, "", "[MPTS2] Error reading file: " + path("Tornel/EITTableVersionStoreFile2")},
          LogLine{3, "", "[MPTS2] Error reading tables from file"}));
  EXPECT_EQ(versions_.selectEITVersion(1, 0x4E), 1);
}

TEST_F(EITVersionsTest, ThatCannotBeSavedAreAnErrorAndKept) {
  (void)versions_.selectEITVersion(1, 0x4E);
  fake::clearLog();
  fake::platform().createDirectoryResult = 1;
  versions_.saveEITVersions();
  EXPECT_THAT(fake::logLines(),
              ElementsAre(LogLine{7, "", "[MPTS2] has to save the new tables in a file"},
                          LogLine{3, "", "[MPTS2] Could not create directory: " + path("Tornel")},
                          LogLine{3, "", "[MPTS2] Error writing EIT table version in file"}));
  fake::platform().createDirectoryResult = 0;
  EXPECT_EQ(saved().at(1).versions.at(0x4E), 1);
}

}  // namespace
}  // namespace tevra::test
