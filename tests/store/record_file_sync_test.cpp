#include <filesystem>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"
#include "tests/support/sync_recorder.h"

// When the files reach the disk.

namespace tevra::test {
namespace {

template <class Record>
class RecordFileSync : public fake::PlatformTest {
 protected:
  RecordFileSync() { clearSyncCalls(); }

  [[nodiscard]] static std::string file() { return path("file"); }
};

TYPED_TEST_SUITE(RecordFileSync, RecordFiles, RecordName);

TYPED_TEST(RecordFileSync, ItsFileSystemIsSyncedBeforeTheLastBufferThenTheFileThenEverything) {
  for (const TypeParam& record : {TypeParam(), sample<TypeParam>(), largeSample<TypeParam>()}) {
    clearSyncCalls();
    ASSERT_EQ(writeRecordToFile(this->file(), storedEntries(record)), kRecordFileDone);
    const auto whole = static_cast<off_t>(jsonOf(record).size());
    const std::vector<SyncCall> calls = syncCalls();
    ASSERT_EQ(calls.size(), 3U);
    EXPECT_EQ(calls[0].what, SyncCall::Of::FileSystem);
    EXPECT_LT(calls[0].size, whole);
    EXPECT_GE(calls[0].size, whole - static_cast<off_t>(kRecordFileBuffer));
    EXPECT_EQ(calls[1].what, SyncCall::Of::File);
    EXPECT_EQ(calls[1].size, whole);
    EXPECT_EQ(calls[2].what, SyncCall::Of::Everything);
    EXPECT_EQ(calls[2].size, whole);  // in its place
    EXPECT_TRUE(calls[2].closed);
  }
}

TYPED_TEST(RecordFileSync, AFileThatCannotBeSyncedFailsAndTheFormerOneStays) {
  writeText(this->file(), "former");
  setFsyncResult(-1);
  std::string reason;
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam()), &reason),
            kRecordFileFailed);
  setFsyncResult(0);
  EXPECT_EQ(readText(this->file()), "former");
  EXPECT_FALSE(std::filesystem::exists(this->file() + ".new"));
  EXPECT_EQ(syncCalls().size(), 2U);
  EXPECT_EQ(reason, "cannot sync " + this->file() + ".new: Input/output error");
}

TYPED_TEST(RecordFileSync, AFileSystemThatCannotBeSyncedFailsTheMappingAlone) {
  constexpr bool kFails = std::is_same_v<TypeParam, PIDRemap>;
  writeText(this->file(), "former");
  setSyncfsResult(-1);
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam())),
            kFails ? kRecordFileFailed : kRecordFileDone);
  setSyncfsResult(0);
  EXPECT_EQ(readText(this->file()), kFails ? "former" : jsonOf(TypeParam()));
}

TYPED_TEST(RecordFileSync, WhatCannotBeWrittenIsNotSynced) {
  EXPECT_EQ(writeRecordToFile("/dev/full", storedEntries(largeSample<TypeParam>())),
            kRecordFileFailed);
  EXPECT_EQ(writeRecordToFile(this->path("none/file"), storedEntries(TypeParam())),
            kRecordFileNotOpened);
  EXPECT_TRUE(syncCalls().empty());
}

TYPED_TEST(RecordFileSync, WhatFailsWithItsLastBufferIsNotSyncedAfterwards) {
  EXPECT_EQ(writeRecordToFile("/dev/full", storedEntries(TypeParam())), kRecordFileFailed);
  ASSERT_EQ(syncCalls().size(), 1U);
  EXPECT_EQ(syncCalls()[0].what, SyncCall::Of::FileSystem);
}

TYPED_TEST(RecordFileSync, ReadingSyncsNothing) {
  TypeParam record;
  EXPECT_EQ(readRecordFromFile(this->file(), record), kRecordFileNotOpened);
  writeText(this->file(), jsonOf(record));
  EXPECT_EQ(readRecordFromFile(this->file(), record), kRecordFileDone);
  EXPECT_TRUE(syncCalls().empty());
}

}  // namespace
}  // namespace tevra::test
