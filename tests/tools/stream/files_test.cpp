#include "tools/stream/files.h"

#include <fcntl.h>
#include <stdio_ext.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <utility>

#include <gmock/gmock.h>

#include "tests/platform/temporary_directory.h"
#include "tests/support/files.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using tevra::test::readText;
using tevra::test::writeText;

class ReplacedFile : public testing::Test {
 protected:
  [[nodiscard]] std::ptrdiff_t filesThere() const {
    return std::distance(std::filesystem::directory_iterator(directory_.path()), {});
  }

  const tevra::test::TemporaryDirectory directory_;
  const std::string path_ = directory_ / "file";
};

TEST_F(ReplacedFile, IsAnotherSoThatWhoReadsTheFormerOneReadsItWhole) {
  writeText(path_, "former");
  std::ifstream former(path_);
  replaceFile(path_, "new");
  EXPECT_EQ("new", readText(path_));
  EXPECT_EQ("former", std::string(std::istreambuf_iterator<char>(former), {}));
  EXPECT_EQ(1, filesThere());
}

TEST_F(ReplacedFile, IsMadeWhereThereIsNoneForAllToRead) {
  const tevra::test::ScopedUmask mask(022);
  replaceFile(path_, "new");
  EXPECT_EQ("new", readText(path_));
  EXPECT_EQ(0644U, tevra::test::modeOf(path_));
}

TEST_F(ReplacedFile, StaysBehindASymbolicLink) {
  writeText(directory_ / "target", "former");
  std::filesystem::create_symlink("target", path_);
  replaceFile(path_, "new");
  EXPECT_TRUE(std::filesystem::is_symlink(path_));
  EXPECT_EQ("new", readText(directory_ / "target"));
}

TEST_F(ReplacedFile, IsWrittenWhereItLiesIfItIsAPipe) {
  ASSERT_EQ(0, mkfifo(path_.c_str(), 0600));
  const int reader = open(path_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  replaceFile(path_, "new");
  std::string got(8, '\0');
  got.resize(static_cast<size_t>(std::max<ssize_t>(0, read(reader, got.data(), got.size()))));
  close(reader);
  EXPECT_EQ("new", got);
  EXPECT_EQ(1, filesThere());
}

TEST_F(ReplacedFile, IsWrittenWhereItLiesIfItHasNoName) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(0, pipe2(pipe.data(), O_CLOEXEC | O_NONBLOCK));
  replaceFile("/proc/self/fd/" + std::to_string(pipe[1]), "new");
  std::array<char, 8> got{};
  EXPECT_EQ(3, read(pipe[0], got.data(), got.size()));
  EXPECT_STREQ("new", got.data());
  close(pipe[0]);
  close(pipe[1]);
}

TEST_F(ReplacedFile, MayBeStandardOutput) {
  testing::internal::CaptureStdout();
  replaceFile("-", "new");
  EXPECT_EQ("new", testing::internal::GetCapturedStdout());
  EXPECT_FALSE(std::filesystem::exists("-"));
}

TEST_F(ReplacedFile, StaysWhereTheNewOneCannotBeWrittenOrPutInItsPlace) {
  EXPECT_THROW(replaceFile(directory_ / "absent/file", "new"), ToolError);
  EXPECT_THROW(replaceFile(directory_.path(), "new"), ToolError);
  std::filesystem::create_symlink("nowhere/at/all", path_);
  EXPECT_THROW(replaceFile("", "new"), ToolError);
  EXPECT_EQ(1, filesThere());
}

class Fifo : public testing::Test {
 protected:
  Fifo() { EXPECT_EQ(0, mkfifo(path_.c_str(), 0600)); }
  ~Fifo() override { closeWriter(); }

  void openWriter() { writer_ = open(path_.c_str(), O_WRONLY | O_CLOEXEC); }
  void closeWriter() { close(std::exchange(writer_, -1)); }
  void write(const std::string& text) const {
    EXPECT_EQ(static_cast<ssize_t>(text.size()), ::write(writer_, text.data(), text.size()));
  }

  const tevra::test::TemporaryDirectory directory_;
  const std::string path_ = directory_ / "fifo";
  LiveOptions live_;

 private:
  int writer_ = -1;
};

/** Why it fails; nothing if it does not. */
std::string faultOf(const std::function<void()>& call) {
  try {
    call();
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
}

std::string readOnce(ByteSource& source) {
  std::array<uint8_t, 100> buffer{};
  const size_t count = source.read(buffer.data(), buffer.size());
  return {buffer.begin(), buffer.begin() + static_cast<std::ptrdiff_t>(count)};
}

TEST_F(Fifo, WithoutAWriterIsWaitedForUntilStopped) {
  int told = 0;
  live_.onSilence = [&told](std::chrono::milliseconds /*silence*/) { ++told; };
  live_.stopped = [&told] { return told == 2; };
  InputFile file(path_, live_);
  EXPECT_EQ("", readOnce(file));
  EXPECT_EQ(2, told);
}

TEST_F(Fifo, HandsOnAtOnceWhatComesUntilItsWriterLeaves) {
  live_.onSilence = [this](std::chrono::milliseconds /*silence*/) { write("behind a pause"); };
  InputFile file(path_, live_);
  EXPECT_FALSE(file.size().has_value());
  EXPECT_FALSE(file.rewind());
  openWriter();
  write("one");
  EXPECT_EQ("one", readOnce(file));
  EXPECT_EQ("behind a pause", readOnce(file));
  write("the rest");
  closeWriter();
  EXPECT_EQ("the rest", readOnce(file));
  EXPECT_EQ("", readOnce(file));
}

TEST(StandardInput, IsWaitedForUntilStoppedAndLeftOpen) {
  std::array<int, 2> pipe{};
  ASSERT_EQ(0, pipe2(pipe.data(), O_CLOEXEC));
  const int before = dup(STDIN_FILENO);
  dup2(pipe[0], STDIN_FILENO);
  bool isTold = false;
  LiveOptions live;
  live.onSilence = [&isTold](std::chrono::milliseconds /*silence*/) { isTold = true; };
  live.stopped = [&isTold] { return isTold; };
  EXPECT_EQ(3, write(pipe[1], "one", 3));
  {
    InputFile source("-", live);
    EXPECT_EQ("one", readOnce(source));
    EXPECT_EQ("", readOnce(source));
  }
  EXPECT_TRUE(isTold);
  EXPECT_NE(-1, fcntl(STDIN_FILENO, F_GETFD));
  dup2(before, STDIN_FILENO);
  for (const int descriptor : {before, pipe[0], pipe[1]}) {
    close(descriptor);
  }
}

TEST(StandardStreams, AreNamedWhereTheyFail) {
  const int input = dup(STDIN_FILENO);
  const int output = dup(STDOUT_FILENO);
  const int folder = open("/", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  const int full = open("/dev/full", O_WRONLY | O_CLOEXEC);
  std::fflush(stdout);
  dup2(folder, STDIN_FILENO);
  dup2(full, STDOUT_FILENO);
  InputFile source("-");
  const std::string reading = faultOf([&] { (void)readOnce(source); });
  const std::string writing = faultOf([] { replaceFile("-", "new"); });
  __fpurge(stdout);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  for (const int descriptor : {input, output, folder, full}) {
    close(descriptor);
  }
  EXPECT_EQ("cannot read standard input: Is a directory", reading);
  EXPECT_EQ("cannot write standard output: No space left on device", writing);
}

/** Why it cannot be written; nothing if it can. */
std::string faultOf(const std::string& path) {
  return faultOf([&] { requireWritable(path); });
}

TEST_F(ReplacedFile, CanBeToldToBeWritableWithoutTouchingIt) {
  EXPECT_EQ("", faultOf("-"));
  EXPECT_EQ("", faultOf(path_));
  EXPECT_EQ("", faultOf("file-in-the-working-directory"));
  EXPECT_EQ(0, filesThere());
  writeText(path_, "former");
  EXPECT_EQ("", faultOf(path_));
  EXPECT_EQ("former", readText(path_));
  EXPECT_EQ("cannot write " + directory_.path() + ": it is a directory; name a file in it",
            faultOf(directory_.path()));
  EXPECT_EQ("cannot write the output: no file is named", faultOf(""));
  EXPECT_EQ("cannot write /no/such/file: there is no directory /no/such; make it first",
            faultOf("/no/such/file"));
}

TEST_F(ReplacedFile, IsWrittenWhereItLiesInAFolderThatTakesNoOther) {
  writeText(path_, "former");
  ASSERT_EQ(0, chmod(path_.c_str(), 0666));
  ASSERT_EQ(0, chmod(directory_.path().c_str(), 0555));
  const uid_t user = geteuid();
  if (user == 0) {  // whom no folder refuses a file
    ASSERT_EQ(0, seteuid(65534));
  }
  EXPECT_EQ("", faultOf(path_));
  EXPECT_NO_THROW(replaceFile(path_, "new"));
  EXPECT_EQ(0, seteuid(user));
  ASSERT_EQ(0, chmod(directory_.path().c_str(), 0755));
  EXPECT_EQ("new", readText(path_));
}

}  // namespace
}  // namespace tevra::tools
