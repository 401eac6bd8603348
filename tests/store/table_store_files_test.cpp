#include "store/table_store_files.h"

#include <gtest/gtest.h>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/sample_records.h"
#include "tests/records/wire.h"
#include "tests/support/files.h"

namespace tevra::test {
namespace {

/** What tells the two files apart. */
template <class Record>
struct Kind;

template <>
struct Kind<TableStoreFile> {
  static constexpr const char* kFile = "Tornel/TableStoreFile";
  static constexpr const char* kRecovered = " Recovering saved DVB tables";
  static int save(const TableStoreFile& record, int32_t mpts) {
    return saveTableStoreFile(record, mpts);
  }
  static int load(TableStoreFile& record, int32_t mpts) { return loadTableStoreFile(record, mpts); }
};

template <>
struct Kind<EITTableVersionStoreFile> {
  static constexpr const char* kFile = "Tornel/EITTableVersionStoreFile";
  static constexpr const char* kRecovered = " Recovering saved EIT table versions";
  static int save(const EITTableVersionStoreFile& record, int32_t mpts) {
    return saveEITTableVersionStoreFile(record, mpts);
  }
  static int load(EITTableVersionStoreFile& record, int32_t mpts) {
    return loadEITTableVersionStoreFile(record, mpts);
  }
};

std::vector<fake::LogLine> oneLine(int level, const std::string& text) {
  return {{level, "", text}};
}

template <class Record>
class TableStoreFiles : public fake::PlatformTest {
 protected:
  static std::string file(int32_t mpts) { return path(Kind<Record>::kFile + std::to_string(mpts)); }

  static int save(int32_t mpts) { return Kind<Record>::save(sample<Record>(), mpts); }

  int load(int32_t mpts) { return Kind<Record>::load(loaded_, mpts); }

  Record loaded_;
};

using Records = ::testing::Types<TableStoreFile, EITTableVersionStoreFile>;

struct RecordName {
  template <class Record>
  static std::string GetName(int) {
    return Members<Record>::kName;
  }
};

TYPED_TEST_SUITE(TableStoreFiles, Records, RecordName);

TYPED_TEST(TableStoreFiles, SavingMakesTheDirectoryAndTheFileAndLogsNothing) {
  const ScopedUmask umask(0);
  EXPECT_EQ(this->save(0), 0);
  EXPECT_EQ(modeOf(this->path("Tornel")), 0755U);
  EXPECT_EQ(modeOf(this->file(0)), 0600U);
  EXPECT_EQ(readText(this->file(0)), jsonOf(sample<TypeParam>()));
  EXPECT_TRUE(fake::logLines().empty());
}

TYPED_TEST(TableStoreFiles, TheIndexIsPartOfTheName) {
  for (const int32_t mpts : {0, 1, 2, 3}) {
    EXPECT_EQ(this->save(mpts), 0);
    EXPECT_TRUE(std::filesystem::is_regular_file(this->file(mpts)));
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(this->path("Tornel")), {}),
              mpts + 1);
  }
}

TYPED_TEST(TableStoreFiles, LoadingTakesTheFileOfItsOwnIndex) {
  EXPECT_EQ(this->save(1), 0);
  EXPECT_EQ(Kind<TypeParam>::save(TypeParam(), 2), 0);
  EXPECT_EQ(this->load(2), 0);
  EXPECT_EQ(this->loaded_, TypeParam());
  EXPECT_EQ(this->load(1), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
  EXPECT_EQ(this->load(0), 1);
}

TYPED_TEST(TableStoreFiles, LoadingSaysWhatWasRecovered) {
  ASSERT_EQ(this->save(3), 0);
  EXPECT_EQ(this->load(3), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogDebug, std::string("[MPTS3]") + Kind<TypeParam>::kRecovered));
}

TYPED_TEST(TableStoreFiles, SavingRewritesTheWholeFile) {
  ASSERT_EQ(this->save(0), 0);
  EXPECT_EQ(Kind<TypeParam>::save(TypeParam(), 0), 0);
  EXPECT_EQ(readText(this->file(0)), jsonOf(TypeParam()));
}

TYPED_TEST(TableStoreFiles, AMissingFileIsAnErrorAndMakesNoDirectory) {
  EXPECT_EQ(this->load(2), 1);
  EXPECT_EQ(fake::logLines(), oneLine(kLogError, "[MPTS2] Error reading file: " + this->file(2)));
  EXPECT_EQ(this->loaded_, TypeParam());
  EXPECT_FALSE(std::filesystem::exists(this->path("Tornel")));
}

TYPED_TEST(TableStoreFiles, ACorruptFileIsAnErrorAndKeepsWhatWasRead) {
  ASSERT_EQ(this->save(0), 0);
  const std::string json = readText(this->file(0));
  // The maps, and so the file, end with the second entry's closing brackets.
  writeText(this->file(0), json.substr(0, json.size() - 4));
  EXPECT_EQ(this->load(0), 1);
  EXPECT_EQ(fake::logLines(), oneLine(kLogError, "[MPTS0] Error reading file: " + this->file(0)));
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
}

TYPED_TEST(TableStoreFiles, ADirectoryThatCannotBeMadeLeavesTheFileAlone) {
  ASSERT_EQ(this->save(1), 0);
  fake::platform().createDirectoryResult = 5;
  EXPECT_EQ(Kind<TypeParam>::save(TypeParam(), 1), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS1] Could not create directory: " + this->path("Tornel")));
  EXPECT_EQ(readText(this->file(1)), jsonOf(sample<TypeParam>()));
}

TYPED_TEST(TableStoreFiles, ANegativeResultIsAFailureToo) {
  fake::platform().createDirectoryResult = -1;
  EXPECT_EQ(this->save(0), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS0] Could not create directory: " + this->path("Tornel")));
}

TYPED_TEST(TableStoreFiles, AFileInThePlaceOfTheDirectoryIsAnError) {
  writeText(this->path("Tornel"), "in the way");
  EXPECT_EQ(this->save(0), 1);
  EXPECT_EQ(fake::logLines(),
            oneLine(kLogError, "[MPTS0] Could not create directory: " + this->path("Tornel")));
  EXPECT_EQ(this->load(0), 1);
  EXPECT_TRUE(fake::logged(kLogError, "[MPTS0] Error reading file: " + this->file(0)));
}

TYPED_TEST(TableStoreFiles, ADirectoryInThePlaceOfTheFileIsAnError) {
  std::filesystem::create_directories(this->file(3));
  EXPECT_EQ(this->save(3), 1);
  EXPECT_EQ(fake::logLines(), oneLine(kLogError, "[MPTS3] Error writing file: " + this->file(3)));
  fake::clearLog();
  EXPECT_EQ(this->load(3), 1);
  EXPECT_EQ(fake::logLines(), oneLine(kLogError, "[MPTS3] Error reading file: " + this->file(3)));
}

TYPED_TEST(TableStoreFiles, AFullDiskIsAnErrorAndTheNextSaveTriesAgain) {
  std::filesystem::create_directories(this->path("Tornel"));
  std::filesystem::create_symlink("/dev/full", this->file(0));
  EXPECT_EQ(this->save(0), 1);
  EXPECT_EQ(fake::logLines(), oneLine(kLogError, "[MPTS0] Error writing file: " + this->file(0)));
  std::filesystem::remove(this->file(0));
  fake::clearLog();
  EXPECT_EQ(this->save(0), 0);
  EXPECT_TRUE(fake::logLines().empty());
  EXPECT_EQ(this->load(0), 0);
  EXPECT_EQ(this->loaded_, sample<TypeParam>());
}

class TheTwoFiles : public fake::PlatformTest {};

TEST_F(TheTwoFiles, LieSideBySide) {
  ASSERT_EQ(saveTableStoreFile(sample<TableStoreFile>(), 2), 0);
  ASSERT_EQ(saveEITTableVersionStoreFile(sample<EITTableVersionStoreFile>(), 2), 0);
  EXPECT_EQ(readText(path("Tornel/TableStoreFile2")), jsonOf(sample<TableStoreFile>()));
  EXPECT_EQ(readText(path("Tornel/EITTableVersionStoreFile2")),
            jsonOf(sample<EITTableVersionStoreFile>()));
}

}  // namespace
}  // namespace tevra::test
