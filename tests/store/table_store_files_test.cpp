#include "store/table_store_files.h"

#include <gtest/gtest.h>

#include <type_traits>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"

namespace tevra::test {
namespace {

std::vector<fake::LogLine> oneLine(int level, const std::string& text) {
  return {{level, "", text}};
}

/** An error of MPTS `mpts` and why. */
std::vector<fake::LogLine> failure(int mpts, const std::string& text, const std::string& reason) {
  const std::string prefix = "[MPTS" + std::to_string(mpts) + "] ";
  return {{kLogError, "", prefix + text}, {kLogDebug, "", prefix + "Reason: " + reason}};
}

template <class Record>
class TableStoreFiles : public fake::PlatformTest {
 protected:
  static std::string file(int32_t mpts) { return path(nameOf<Record>(mpts)); }

  Record loaded_;
};

TYPED_TEST_SUITE(TableStoreFiles, StoreFiles, RecordName);

TYPED_TEST(TableStoreFiles, SavingMakesTheDirectoryAndTheFileAndLogsNothing) {
  const ScopedUmask umask(0);
  EXPECT_EQ(save(sample<TypeParam>(), 0), 0);
  EXPECT_EQ(modeOf(this->path("Tornel")), 0755U);
  EXPECT_EQ(modeOf(this->file(0)), 0600U);
  EXPECT_EQ(readText(this->file(0)), jsonOf(sample<TypeParam>()));
  EXPECT_TRUE(fake::logLines().empty());
}

TYPED_TEST(TableStoreFiles, TheIndexIsPartOfTheName) {
  for (const int32_t mpts : {0, 1, 2, 3}) {
    EXPECT_EQ(save(sample<TypeParam>(), mpts), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(this->file(mpts)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(this->path("Tornel")), {}),
              mpts + 1);
  }
}

TYPED_TEST(TableStoreFiles, LoadingTakesTheFileOfItsOwnIndex) {
  EXPECT_EQ(save(sample<TypeParam>(), 1), 0);
  EXPECT_EQ(save(TypeParam(), 2), 0);
  EXPECT_EQ(load(this->loaded_, 2), 0);
  EXPECT_EQ(this->loaded_, TypeParam());
  EXPECT_EQ(load(this->loaded_, 1), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
  EXPECT_EQ(load(this->loaded_, 0), 1);
}

TYPED_TEST(TableStoreFiles, LoadingSaysWhatWasRecovered) {
  ASSERT_EQ(save(sample<TypeParam>(), 3), 0);
  EXPECT_EQ(load(this->loaded_, 3), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogDebug, std::is_same_v<TypeParam, TableStoreFile>
                                   ? "[MPTS3] Recovering saved DVB tables"
                                   : "[MPTS3] Recovering saved EIT table versions"));
}

TYPED_TEST(TableStoreFiles, SavingRewritesTheWholeFile) {
  ASSERT_EQ(save(sample<TypeParam>(), 0), 0);
  EXPECT_EQ(save(TypeParam(), 0), 0);
  EXPECT_EQ(readText(this->file(0)), jsonOf(TypeParam()));
}

TYPED_TEST(TableStoreFiles, AMissingFileIsAnErrorAndMakesNoDirectory) {
  EXPECT_EQ(load(this->loaded_, 2), 1);
  EXPECT_EQ(fake::logLines(), failure(2, "Error reading file: " + this->file(2),
                                      "cannot open: No such file or directory"));
  EXPECT_EQ(this->loaded_, TypeParam());
  EXPECT_FALSE(std::filesystem::exists(this->path("Tornel")));
}

TYPED_TEST(TableStoreFiles, ACorruptFileIsAnErrorAndKeepsWhatWasRead) {
  ASSERT_EQ(save(sample<TypeParam>(), 0), 0);
  const std::string json = readText(this->file(0));
  // The maps, and so the file, end with the second entry's closing brackets.
  writeText(this->file(0), json.substr(0, json.size() - 4));
  EXPECT_EQ(load(this->loaded_, 0), 1);
  EXPECT_EQ(fake::logLines(),
            failure(0, "Error reading file: " + this->file(0), "No more data to read."));
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
}

TYPED_TEST(TableStoreFiles, ADirectoryThatCannotBeMadeLeavesTheFileAlone) {
  ASSERT_EQ(save(sample<TypeParam>(), 1), 0);
  fake::platform().createDirectoryResult = 5;
  EXPECT_EQ(save(TypeParam(), 1), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS1] Could not create directory: " + this->path("Tornel")));
  EXPECT_EQ(readText(this->file(1)), jsonOf(sample<TypeParam>()));
}

TYPED_TEST(TableStoreFiles, ANegativeResultIsAFailureToo) {
  fake::platform().createDirectoryResult = -1;
  EXPECT_EQ(save(sample<TypeParam>(), 0), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS0] Could not create directory: " + this->path("Tornel")));
}

TYPED_TEST(TableStoreFiles, AFileInThePlaceOfTheDirectoryIsAnError) {
  writeText(this->path("Tornel"), "in the way");
  EXPECT_EQ(save(sample<TypeParam>(), 0), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS0] Could not create directory: " + this->path("Tornel")));
  EXPECT_EQ(load(this->loaded_, 0), 1);
  EXPECT_TRUE(fake::logged(kLogError, "[MPTS0] Error reading file: " + this->file(0)));
}

TYPED_TEST(TableStoreFiles, ADirectoryInThePlaceOfTheFileIsAnError) {
  std::filesystem::create_directories(this->file(3));
  EXPECT_EQ(save(sample<TypeParam>(), 3), 1);
  EXPECT_EQ(fake::logLines(), failure(3, "Error writing file: " + this->file(3),
                                      "cannot open " + this->file(3) + ": Is a directory"));
  fake::clearLog();
  EXPECT_EQ(load(this->loaded_, 3), 1);
  EXPECT_EQ(fake::logLines().front(),
            oneLine(kLogError, "[MPTS3] Error reading file: " + this->file(3)).front());
}

TYPED_TEST(TableStoreFiles, AFullDiskIsAnErrorAndTheNextSaveTriesAgain) {
  std::filesystem::create_directories(this->path("Tornel"));
  std::filesystem::create_symlink("/dev/full", this->file(0));
  EXPECT_EQ(save(sample<TypeParam>(), 0), 1);
  EXPECT_EQ(fake::logLines(), failure(0, "Error writing file: " + this->file(0),
                                      "TFDTransport::write(): No space left on device"));
  std::filesystem::remove(this->file(0));
  fake::clearLog();
  EXPECT_EQ(save(sample<TypeParam>(), 0), 0);
  EXPECT_TRUE(fake::logLines().empty());
  EXPECT_EQ(load(this->loaded_, 0), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
}

class TheTwoFiles : public fake::PlatformTest {};

TEST_F(TheTwoFiles, LieSideBySide) {
  ASSERT_EQ(save(sample<TableStoreFile>(), 2), 0);
  ASSERT_EQ(save(sample<EITTableVersionStoreFile>(), 2), 0);
  EXPECT_EQ(readText(path("Tornel/TableStoreFile2")), jsonOf(sample<TableStoreFile>()));
  EXPECT_EQ(readText(path("Tornel/EITTableVersionStoreFile2")),
            jsonOf(sample<EITTableVersionStoreFile>()));
}

}  // namespace
}  // namespace tevra::test
