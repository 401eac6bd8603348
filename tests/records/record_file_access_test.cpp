#include "records/record_file_access.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "tests/fakes/fake_platform.h"
#include "tests/support/files.h"
#include "tests/support/lacks_memory.h"

namespace tevra::test {
namespace {

class RecordFileAccess : public fake::PlatformTest {
 protected:
  static std::string contentOf(const std::string& path) {
    return readRecordFile(*openRecordFile(path))->getBufferAsString();
  }

  const std::string file_ = path("file");
  const std::string pipe_ = path("pipe");
};

TEST_F(RecordFileAccess, WhatIsNotThereCannotBeOpened) {
  EXPECT_FALSE(openRecordFile(file_)->isOpen());
}

TEST_F(RecordFileAccess, APipeWithoutAWriterIsEmpty) {
  ASSERT_EQ(mkfifo(pipe_.c_str(), 0600), 0);
  ASSERT_TRUE(openRecordFile(pipe_)->isOpen());
  EXPECT_EQ(contentOf(pipe_), "");
}

TEST_F(RecordFileAccess, ReadsAFileWhole) {
  for (const size_t size : {0U, 1U, 8U, 16383U, 16384U, 16385U, 100000U}) {
    std::string content(size, 'x');
    std::ofstream(file_) << content;
    EXPECT_EQ(contentOf(file_), content);
  }
}

TEST_F(RecordFileAccess, ReadsNoMoreThanTheLimit) {
  std::ofstream(file_) << "abcdefgh";
  EXPECT_EQ(readRecordFile(*openRecordFile(file_), 0)->getBufferAsString(), "");
  EXPECT_EQ(readRecordFile(*openRecordFile(file_), 5)->getBufferAsString(), "abcde");
  EXPECT_EQ(readRecordFile(*openRecordFile(file_), 9)->getBufferAsString(), "abcdefgh");
}

TEST_F(RecordFileAccess, ReadsOfAnEndlessFileWhatAFileMayHold) {
  EXPECT_EQ(readRecordFile(*openRecordFile("/dev/zero"))->available_read(), kMaxRecordFileSize);
}

TEST_F(RecordFileAccess, ADirectoryIsEmpty) {
  ASSERT_TRUE(openRecordFile(path("."))->isOpen());
  EXPECT_EQ(contentOf(path(".")), "");
}

TEST_F(RecordFileAccess, AFileThatCannotBeReadToItsEndEndsWhereReadingFails) {
  ASSERT_EQ(mkfifo(pipe_.c_str(), 0600), 0);
  const int writer = open(pipe_.c_str(), O_RDWR | O_CLOEXEC);
  // More than one block, and no end: the next read fails.
  const std::string written(20000, 'x');
  ASSERT_EQ(write(writer, written.data(), written.size()), ssize_t{20000});
  EXPECT_EQ(contentOf(pipe_), written);
  close(writer);
}

TEST_F(RecordFileAccess, TheFileIsClosedWithItsOwner) {
  std::ofstream(file_) << "abc";
  const std::ptrdiff_t before = openDescriptors();
  (void)openRecordFile(file_);
  EXPECT_EQ(openDescriptors(), before);
}

TEST_F(RecordFileAccess, LackOfMemoryLeavesNothingOpen) {
  std::ofstream(file_) << "{}";
  const std::ptrdiff_t before = openDescriptors();
  size_t allowed = 0;
  while (lacksMemory(allowed, [&] { (void)openRecordFile(file_); })) {
    EXPECT_EQ(openDescriptors(), before) << allowed;
    ++allowed;
  }
  EXPECT_GE(allowed, 1U);
}

}  // namespace
}  // namespace tevra::test
