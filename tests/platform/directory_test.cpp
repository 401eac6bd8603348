#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include "platform/module_utils.h"
#include "tests/platform/temporary_directory.h"

namespace {

/** Permission bits of a directory; 0 when there is none. */
mode_t directoryMode(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode) ? status.st_mode & 07777 : 0;
}

class CreateDirectory : public testing::Test {
 protected:
  ~CreateDirectory() override { umask(formerUmask_); }

  static int create(const std::string& path, mode_t mode = 0755) {
    return createDirectory(path.c_str(), mode);
  }

  tevra::test::TemporaryDirectory base;

 private:
  mode_t formerUmask_ = umask(022);
};

TEST_F(CreateDirectory, MakesTheDirectoryAndItsMissingParents) {
  EXPECT_EQ(create(base / "one/two/three"), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0755U);
  EXPECT_EQ(directoryMode(base / "one/two"), 0755U);
  EXPECT_EQ(directoryMode(base / "one/two/three"), 0755U);
}

TEST_F(CreateDirectory, GivesTheModeThatAStrictUmaskWouldTakeAway) {
  umask(077);
  EXPECT_EQ(create(base / "one/two", 0775), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0775U);
  EXPECT_EQ(directoryMode(base / "one/two"), 0775U);
}

TEST_F(CreateDirectory, GivesNoMoreThanTheModeUnderAnOpenUmask) {
  umask(0);
  EXPECT_EQ(create(base / "one", 0750), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0750U);
}

TEST_F(CreateDirectory, MakesParentsWhoseModeDeniesTheirOwner) {
  EXPECT_EQ(create(base / "one/two", 0555), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0555U);
  EXPECT_EQ(directoryMode(base / "one/two"), 0555U);
  chmod((base / "one").c_str(), 0755);  // So that it can be removed.
}

TEST_F(CreateDirectory, SucceedsForAnExistingDirectoryAndLeavesItsMode) {
  ASSERT_EQ(mkdir((base / "one").c_str(), 0700), 0);
  EXPECT_EQ(create(base / "one", 0755), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0700U);
}

TEST_F(CreateDirectory, LeavesTheModeOfExistingParents) {
  ASSERT_EQ(mkdir((base / "one").c_str(), 0700), 0);
  EXPECT_EQ(create(base / "one/two", 0755), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0700U);
  EXPECT_EQ(directoryMode(base / "one/two"), 0755U);
}

TEST_F(CreateDirectory, SucceedsForTheRootOfTheFileSystem) {
  EXPECT_EQ(create("/"), 0);
}

TEST_F(CreateDirectory, TakesRepeatedAndTrailingSlashes) {
  EXPECT_EQ(create(base / "/one//two///"), 0);
  EXPECT_EQ(directoryMode(base / "one/two"), 0755U);
}

TEST_F(CreateDirectory, TakesARelativePath) {
  const int former = open(".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  ASSERT_GE(former, 0);
  ASSERT_EQ(chdir(base.path().c_str()), 0);
  const int result = create("one/../two");
  ASSERT_EQ(fchdir(former), 0);
  close(former);
  EXPECT_EQ(result, 0);
  EXPECT_EQ(directoryMode(base / "two"), 0755U);
}

TEST_F(CreateDirectory, FollowsALinkToADirectory) {
  ASSERT_EQ(mkdir((base / "real").c_str(), 0700), 0);
  ASSERT_EQ(symlink("real", (base / "link").c_str()), 0);
  EXPECT_EQ(create(base / "link"), 0);
  EXPECT_EQ(create(base / "link/one"), 0);
  EXPECT_EQ(directoryMode(base / "real/one"), 0755U);
}

TEST_F(CreateDirectory, FailsForALinkToNothing) {
  ASSERT_EQ(symlink("nothing", (base / "link").c_str()), 0);
  EXPECT_NE(create(base / "link"), 0);
}

TEST_F(CreateDirectory, FailsWhereAFileHasTheName) {
  std::ofstream(base / "file") << "content";
  EXPECT_NE(create(base / "file"), 0);
  EXPECT_TRUE(std::ifstream(base / "file").is_open());
}

TEST_F(CreateDirectory, FailsWhereAParentIsAFile) {
  std::ofstream(base / "file") << "content";
  EXPECT_NE(create(base / "file/one/two"), 0);
}

TEST_F(CreateDirectory, GivesParentsTheirModeEvenWhereTheRestFails) {
  EXPECT_NE(create(base / ("one/" + std::string(1000, 'x'))), 0);
  EXPECT_EQ(directoryMode(base / "one"), 0755U);
}

TEST_F(CreateDirectory, FailsForNoPath) {
  EXPECT_NE(createDirectory(nullptr, 0755), 0);
  EXPECT_NE(create(""), 0);
}

TEST_F(CreateDirectory, FailsForAPathLongerThanTheSystemTakes) {
  EXPECT_NE(create("/" + std::string(100000, 'x')), 0);
}

TEST_F(CreateDirectory, SucceedsForAllWhoCreateTheSameAtOnce) {
  std::atomic<int> failures = 0;
  for (int round = 0; round < 50; ++round) {
    const std::string path = base / (std::to_string(round) + "/one/two/three");
    std::vector<std::thread> creators;
    creators.reserve(4);
    for (int creator = 0; creator < 4; ++creator) {
      creators.emplace_back([&] { failures += create(path) == 0 ? 0 : 1; });
    }
    for (std::thread& creator : creators) {
      creator.join();
    }
    EXPECT_EQ(directoryMode(path), 0755U);
  }
  EXPECT_EQ(failures, 0);
}

}  // namespace
