#include <filesystem>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"
#include "tests/support/sync_recorder.h"

// When the store files reach the disk.

namespace tevra::test {
namespace {

constexpr off_t kBuffer = 512;  // of the library's buffered transport

template <class Record>
class RecordFileSync : public fake::PlatformTest {
 protected:
  RecordFileSync() { clearSyncCalls(); }

  [[nodiscard]] static std::string file() { return path("file"); }
};

TYPED_TEST_SUITE(RecordFileSync, StoreFiles, RecordName);

TYPED_TEST(RecordFileSync, ItsFileSystemIsSyncedBeforeTheLastBufferAndEverythingAfterClosing) {
  for (const TypeParam& record : {TypeParam(), sample<TypeParam>(), largeSample<TypeParam>()}) {
    clearSyncCalls();
    ASSERT_EQ(writeRecordToFile(this->file(), record), kRecordFileDone);
    const auto whole = static_cast<off_t>(jsonOf(record).size());
    const std::vector<SyncCall> calls = syncCalls();
    ASSERT_EQ(calls.size(), 2U);
    EXPECT_GE(calls[0].fd, 0);
    EXPECT_LT(calls[0].size, whole);
    EXPECT_GE(calls[0].size, whole - kBuffer);
    EXPECT_EQ(calls[1].fd, -1);
    EXPECT_EQ(calls[1].size, whole);
    EXPECT_TRUE(calls[1].closed);
  }
}

TYPED_TEST(RecordFileSync, AFileSystemThatCannotBeSyncedIsNoFailure) {
  setSyncfsResult(-1);
  EXPECT_EQ(writeRecordToFile(this->file(), TypeParam()), kRecordFileDone);
  setSyncfsResult(0);
  EXPECT_EQ(readText(this->file()), jsonOf(TypeParam()));
  EXPECT_EQ(syncCalls().size(), 2U);
}

TYPED_TEST(RecordFileSync, WhatCannotBeWrittenIsNotSynced) {
  EXPECT_EQ(writeRecordToFile("/dev/full", largeSample<TypeParam>()), kRecordFileFailed);
  EXPECT_EQ(writeRecordToFile(this->path("none/file"), TypeParam()), kRecordFileNotOpened);
  EXPECT_TRUE(syncCalls().empty());
}

TYPED_TEST(RecordFileSync, WhatFailsWithItsLastBufferIsNotSyncedAfterwards) {
  EXPECT_EQ(writeRecordToFile("/dev/full", TypeParam()), kRecordFileFailed);
  const std::vector<SyncCall> calls = syncCalls();
  ASSERT_EQ(calls.size(), 1U);
  EXPECT_GE(calls[0].fd, 0);
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
