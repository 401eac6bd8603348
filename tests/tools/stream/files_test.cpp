#include "tools/stream/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

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

TEST_F(ReplacedFile, StaysWhereTheNewOneCannotBeWrittenOrPutInItsPlace) {
  EXPECT_THROW(replaceFile(directory_ / "absent/file", "new"), ToolError);
  EXPECT_THROW(replaceFile(directory_.path(), "new"), ToolError);
  std::filesystem::create_symlink("nowhere/at/all", path_);
  EXPECT_THROW(replaceFile("", "new"), ToolError);
  EXPECT_EQ(1, filesThere());
}

/** Why it cannot be written; nothing if it can. */
std::string faultOf(const std::string& path) {
  try {
    requireWritable(path);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "";
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

TEST_F(ReplacedFile, IsReadAgainUnlessItIsAPipe) {
  EXPECT_FALSE(isReadOnce(path_));
  EXPECT_FALSE(isReadOnce(directory_.path()));
  EXPECT_TRUE(isReadOnce("/dev/null"));
  ASSERT_EQ(0, mkfifo(path_.c_str(), 0600));
  EXPECT_TRUE(isReadOnce(path_));
}

}  // namespace
}  // namespace tevra::tools
