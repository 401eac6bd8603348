#include "records/record_file_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>

#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

class RecordFileAccess : public fake::PlatformTest {
 protected:
  const std::string file_ = path("file");
  const std::string pipe_ = path("pipe");
};

TEST_F(RecordFileAccess, ANewFileIsForItsOwnerAlone) {
  const auto transport = owningTransport(createRecordFile(file_));
  struct stat status {};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777U, 0600U);
}

TEST_F(RecordFileAccess, CreatingTruncatesWhatWasThere) {
  std::ofstream(file_) << "something";
  const auto transport = owningTransport(createRecordFile(file_));
  EXPECT_EQ(std::ifstream(file_).peek(), std::ifstream::traits_type::eof());
}

TEST_F(RecordFileAccess, WhatIsNotThereCannotBeOpened) {
  EXPECT_EQ(openRecordFile(file_), -1);
  EXPECT_EQ(createRecordFile(path("none/file")), -1);
}

TEST_F(RecordFileAccess, APipeWithoutAReaderIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(pipe_.c_str(), 0600), 0);
  EXPECT_EQ(createRecordFile(pipe_), -1);
}

TEST_F(RecordFileAccess, APipeWithoutAWriterIsEmpty) {
  ASSERT_EQ(mkfifo(pipe_.c_str(), 0600), 0);
  const int fd = openRecordFile(pipe_);
  ASSERT_GE(fd, 0);
  EXPECT_EQ(readRecordFile(fd)->getBufferAsString(), "");
}

TEST_F(RecordFileAccess, ReadsAFileWhole) {
  for (const size_t size : {0U, 1U, 8U, 16383U, 16384U, 16385U, 100000U}) {
    std::string content(size, 'x');
    std::ofstream(file_) << content;
    EXPECT_EQ(readRecordFile(openRecordFile(file_))->getBufferAsString(), content);
  }
}

TEST_F(RecordFileAccess, ReadsNoMoreThanTheLimit) {
  std::ofstream(file_) << "abcdefgh";
  EXPECT_EQ(readRecordFile(openRecordFile(file_), 0)->getBufferAsString(), "");
  EXPECT_EQ(readRecordFile(openRecordFile(file_), 5)->getBufferAsString(), "abcde");
  EXPECT_EQ(readRecordFile(openRecordFile(file_), 9)->getBufferAsString(), "abcdefgh");
}

TEST_F(RecordFileAccess, ReadsOfAnEndlessFileWhatAFileMayHold) {
  EXPECT_EQ(readRecordFile(openRecordFile("/dev/zero"))->available_read(), kMaxRecordFileSize);
}

TEST_F(RecordFileAccess, ADirectoryCannotBeRead) {
  EXPECT_THROW((void)readRecordFile(openRecordFile(path("."))),
               apache::thrift::transport::TTransportException);
}

TEST_F(RecordFileAccess, ReadingClosesTheFile) {
  std::ofstream(file_) << "abc";
  const int fd = openRecordFile(file_);
  (void)readRecordFile(fd);
  EXPECT_EQ(close(fd), -1);
}

}  // namespace
}  // namespace tevra::test
