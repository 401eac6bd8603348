#include "records/record_file_access.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

class RecordFileAccess : public fake::PlatformTest {
 protected:
  const std::string file_ = path("file");
  const std::string pipe_ = path("pipe");
};

/** What is read until the end, asking for `piece` bytes at a time. */
std::string readAll(RecordFileReader& reader, uint32_t piece) {
  std::string all;
  std::vector<uint8_t> buffer(piece);
  while (const uint32_t size = reader.read(buffer.data(), piece)) {
    all.append(buffer.begin(), buffer.begin() + size);
  }
  return all;
}

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
  RecordFileReader reader(fd);
  EXPECT_EQ(readAll(reader, 100), "");
}

TEST_F(RecordFileAccess, ReadsAFileWhole) {
  std::ofstream(file_) << "abcdefgh";
  for (const uint32_t piece : {1U, 3U, 8U, 512U}) {
    RecordFileReader reader(openRecordFile(file_));
    EXPECT_EQ(readAll(reader, piece), "abcdefgh") << piece;
  }
}

TEST_F(RecordFileAccess, ReadsNoMoreThanTheLimit) {
  std::ofstream(file_) << "abcdefgh";
  for (const uint32_t piece : {1U, 3U, 5U, 6U, 512U}) {
    RecordFileReader reader(openRecordFile(file_), 5);
    EXPECT_EQ(readAll(reader, piece), "abcde") << piece;
  }
}

TEST_F(RecordFileAccess, TheReaderClosesItsFile) {
  std::ofstream(file_) << "abc";
  const int fd = openRecordFile(file_);
  { const RecordFileReader reader(fd); }
  EXPECT_EQ(close(fd), -1);
}

}  // namespace
}  // namespace tevra::test
