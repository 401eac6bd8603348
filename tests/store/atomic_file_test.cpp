#include "store/atomic_file.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <string>
#include <system_error>

#include "tests/fakes/fake_platform.h"
#include "tests/support/files.h"
#include "tests/support/sync_recorder.h"

namespace tevra::test {
namespace {

class AtomicFileTest : public fake::PlatformTest {
 protected:
  ~AtomicFileTest() override { EXPECT_EQ(openDescriptors(), descriptorsAtStart_); }

  static void write(AtomicFile& file, const std::string& text) {
    ASSERT_EQ(::write(file.descriptor(), text.data(), text.size()),
              static_cast<ssize_t>(text.size()));
  }

  static void save(const std::string& path, const std::string& text) {
    AtomicFile file(path);
    write(file, text);
    file.commit();
  }

  const std::string file_ = path("file");
  const std::string beside_ = path("file.new");

 private:
  std::ptrdiff_t descriptorsAtStart_ = openDescriptors();
};

TEST_F(AtomicFileTest, TheFormerFileStandsUntilTheNewOneIsCommitted) {
  writeText(file_, "former");
  {
    AtomicFile file(file_);
    write(file, "new");
    EXPECT_EQ(readText(file_), "former");
    EXPECT_EQ(readText(beside_), "new");
    file.commit();
    EXPECT_EQ(readText(file_), "new");
  }
  EXPECT_EQ(readText(file_), "new");
  EXPECT_FALSE(std::filesystem::exists(beside_));
}

TEST_F(AtomicFileTest, WhatIsNotCommittedIsRemoved) {
  {
    AtomicFile file(file_);
    write(file, "new");
  }
  EXPECT_TRUE(std::filesystem::is_empty(path("")));
}

TEST_F(AtomicFileTest, IsForItsOwnerAlone) {
  const ScopedUmask everybodys(0);
  writeText(file_, "former");
  ASSERT_EQ(chmod(file_.c_str(), 0666), 0);
  save(file_, "new");
  EXPECT_EQ(modeOf(file_), 0600U);
}

TEST_F(AtomicFileTest, WhatACrashLeftBesideItIsOverwritten) {
  writeText(beside_, std::string(1000, 'x'));
  save(file_, "new");
  EXPECT_EQ(readText(file_), "new");
}

TEST_F(AtomicFileTest, WhatLiesBesideItIsNeitherFollowedNorTaken) {
  writeText(path("other"), "other");
  ASSERT_EQ(chmod(path("other").c_str(), 0444), 0);
  const auto hardLink = [this] { std::filesystem::create_hard_link(path("other"), beside_); };
  const auto symbolicLink = [this] { std::filesystem::create_symlink(path("other"), beside_); };
  for (const std::function<void()>& put : {std::function<void()>(hardLink), {symbolicLink}}) {
    put();
    save(file_, "new");
    EXPECT_EQ(readText(file_), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(file_));
    EXPECT_EQ(modeOf(file_), 0600U);
    EXPECT_EQ(readText(path("other")), "other");
  }
}

TEST_F(AtomicFileTest, IsWrittenInPlaceWhereADirectoryLiesBesideIt) {
  std::filesystem::create_directory(beside_);
  writeText(file_, "former, and longer");
  save(file_, "new");
  EXPECT_EQ(readText(file_), "new");
  EXPECT_TRUE(std::filesystem::is_directory(beside_));
}

TEST_F(AtomicFileTest, IsWrittenInPlaceWhenTold) {
  writeText(file_, "former, and longer");
  const auto inode = [this] {
    struct stat status {};
    EXPECT_EQ(stat(file_.c_str(), &status), 0);
    return status.st_ino;
  };
  const ino_t before = inode();
  {
    AtomicFile file(file_, AtomicFile::Place::kInPlace);
    write(file, "new");
    file.commit();
  }
  EXPECT_EQ(readText(file_), "new");
  EXPECT_EQ(inode(), before);
}

TEST_F(AtomicFileTest, ReplacesWhatASymbolicLinkPointsTo) {
  std::filesystem::create_directory(path("elsewhere"));
  const std::string target = path("elsewhere/target");
  for (const std::string& link : {target, std::string("elsewhere/target")}) {
    writeText(target, "former");
    std::filesystem::create_symlink(link, path("inner"));
    std::filesystem::create_symlink("inner", file_);
    save(file_, "new");
    EXPECT_EQ(readText(target), "new");
    EXPECT_TRUE(std::filesystem::is_symlink(file_));
    EXPECT_TRUE(std::filesystem::is_symlink(path("inner")));
    std::filesystem::remove(file_);
    std::filesystem::remove(path("inner"));
  }
}

TEST_F(AtomicFileTest, MakesTheFileThatASymbolicLinkWouldPointTo) {
  std::filesystem::create_symlink("target", file_);
  save(file_, "new");
  EXPECT_EQ(readText(path("target")), "new");
}

TEST_F(AtomicFileTest, ASymbolicLinkToItselfCannotBeFollowed) {
  std::filesystem::create_symlink(file_, file_);
  EXPECT_THROW(AtomicFile{file_}, std::system_error);
  EXPECT_TRUE(std::filesystem::is_symlink(file_));
}

TEST_F(AtomicFileTest, ADeviceIsWrittenAndNotReplaced) {
  std::filesystem::create_symlink("/dev/null", file_);
  save(file_, "new");
  EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
  EXPECT_FALSE(std::filesystem::exists("/dev/null.new"));
}

TEST_F(AtomicFileTest, APipeWithoutAReaderIsNotWaitedFor) {
  ASSERT_EQ(mkfifo(file_.c_str(), 0600), 0);
  EXPECT_THROW(AtomicFile{file_}, std::system_error);
  EXPECT_TRUE(std::filesystem::is_fifo(file_));
}

TEST_F(AtomicFileTest, ADirectoryStaysOne) {
  std::filesystem::create_directory(file_);
  EXPECT_THROW(AtomicFile{file_}, std::system_error);
  EXPECT_TRUE(std::filesystem::is_directory(file_));
}

TEST_F(AtomicFileTest, WhatCannotBeRenamedLeavesNothingBeside) {
  AtomicFile file(file_);
  std::filesystem::create_directory(file_);
  EXPECT_THROW(file.commit(), std::system_error);
  EXPECT_TRUE(std::filesystem::exists(beside_));  // until its end
}

TEST_F(AtomicFileTest, WhatCannotBeSyncedLeavesTheFormerFile) {
  writeText(file_, "former");
  setFsyncResult(-1);
  {
    AtomicFile file(file_);
    write(file, "new");
    EXPECT_THROW(file.commit(), std::system_error);
  }
  setFsyncResult(0);
  EXPECT_EQ(readText(file_), "former");
  EXPECT_FALSE(std::filesystem::exists(beside_));
}

/** Runs the rest of the test as a user without rights. */
class AsNobody {
 public:
  AsNobody() { EXPECT_EQ(seteuid(kNobody), 0); }
  ~AsNobody() { EXPECT_EQ(seteuid(0), 0); }
  AsNobody(const AsNobody&) = delete;
  AsNobody& operator=(const AsNobody&) = delete;

  static constexpr uid_t kNobody = 65534;
};

TEST_F(AtomicFileTest, IsWrittenInPlaceWhereNoOtherCanBeMade) {
  if (geteuid() != 0) {
    GTEST_SKIP() << "only root can become another user";
  }
  writeText(file_, "former, and longer");
  ASSERT_EQ(chown(file_.c_str(), AsNobody::kNobody, AsNobody::kNobody), 0);
  ASSERT_EQ(chmod(path("").c_str(), 0755), 0);
  {
    const AsNobody rights;
    save(file_, "new");
  }
  EXPECT_EQ(readText(file_), "new");
  EXPECT_FALSE(std::filesystem::exists(beside_));
}

}  // namespace
}  // namespace tevra::test
