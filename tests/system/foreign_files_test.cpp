#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "tests/system/disk_faults.h"

// Files and directories that belong to somebody else than the user the daemon runs as.

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::ValuesIn;

constexpr uid_t kNobody = 65534;
constexpr uid_t kRoot = 0;

void give(uid_t user, const std::string& path) {
  if (lchown(path.c_str(), user, user) != 0) {
    throw std::runtime_error("cannot give away " + path);
  }
}

void setMode(const std::string& path, mode_t mode) {
  if (chmod(path.c_str(), mode) != 0) {
    throw std::runtime_error("cannot set the mode of " + path);
  }
}

/** The daemon runs as nobody, and everything is nobody's. */
class AsNobody : public DiskFaults {
 protected:
  void SetUp() override {
    if (geteuid() != kRoot) {
      GTEST_SKIP() << "only root can start the daemon as somebody else";
    }
    setup_.user = kNobody;
    setMode(parent_.path(), 0755);
    writeGoodFiles();
    for (const std::string& path :
         {root_, directory_, pathOf(kPids), pathOf(kTables), pathOf(kVersions)}) {
      give(kNobody, path);
    }
  }
};

class AFileOfSomebodyElse : public AsNobody, public testing::WithParamInterface<StoreFile> {
 protected:
  /** From round `round` on the file is written again. */
  void expectRepair(StoreFile file, int32_t round, const std::array<bool, 3>& lost) {
    expectGoodRound(expectedAfter(lost, round));
    start();
    EXPECT_THAT(errors(), IsEmpty());
    EXPECT_EQ(serve(), expectedAfter(lost, round + 1)) << nameOf(file);
  }

  void SetUp() override {
    AsNobody::SetUp();
    if (!IsSkipped()) {
      give(kRoot, pathOf(GetParam()));
      lost_.at(GetParam()) = true;
    }
  }

  std::array<bool, 3> lost_ = {};
};

TEST_P(AFileOfSomebodyElse, ThatMayNotBeReadIsReportedAndReplaced) {
  for (const mode_t mode : {mode_t{0600}, mode_t{0622}}) {
    give(kRoot, pathOf(GetParam()));
    setMode(pathOf(GetParam()), mode);
    start();
    EXPECT_THAT(errors(), ElementsAreArray(loadErrors(GetParam())));
    (void)serve();
    EXPECT_THAT(roundErrors_, IsEmpty());
    EXPECT_EQ(modeOf(pathOf(GetParam())), 0600U);
  }
}

TEST_P(AFileOfSomebodyElse, ThatMayBeReadIsReadAndReplaced) {
  setMode(pathOf(GetParam()), 0644);
  start();
  EXPECT_THAT(errors(), IsEmpty());
  expectGoodRound(expectedAfter({}, 1));
}

TEST_P(AFileOfSomebodyElse, InADirectoryOfSomebodyElseGoesOnWhereItStoodInMemoryOnceItIsMended) {
  const StoreFile file = GetParam();
  give(kRoot, root_);
  give(kRoot, directory_);
  setMode(pathOf(file), 0600);
  const std::string content = readText(pathOf(file));
  start();
  EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
  EXPECT_EQ(serve(), expectedAfter(lost_, 1));
  EXPECT_THAT(roundErrors_, ElementsAreArray(saveErrors(file)));
  EXPECT_EQ(readText(pathOf(file)), content);
  give(kNobody, pathOf(file));
  expectRepair(file, 2, lost_);
}

TEST_P(AFileOfSomebodyElse, InADirectoryOfSomebodyElseIsReadButNotSaved) {
  const StoreFile file = GetParam();
  give(kRoot, root_);
  give(kRoot, directory_);
  setMode(pathOf(file), 0644);
  const std::string content = readText(pathOf(file));
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedAfter({}, 1));
  EXPECT_THAT(roundErrors_, ElementsAreArray(saveErrors(file, false)));
  EXPECT_EQ(readText(pathOf(file)), content);
  setMode(pathOf(file), 0666);
  expectRepair(file, 2, {});
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, AFileOfSomebodyElse, ValuesIn(kStoreFiles),
                         [](const auto& test) { return std::string(nameOf(test.param)); });

TEST_F(AsNobody, FilesWithoutAnyPermissionAreReplaced) {
  for (const StoreFile file : kStoreFiles) {
    setMode(pathOf(file), 0);
  }
  start();
  EXPECT_EQ(errors(), together({loadErrors(kTables), loadErrors(kVersions)}));
  expectGoodRound(expectedAfter({true, true, true}, 1));
}

TEST_F(AsNobody, ADirectoryOfSomebodyElseStillTakesTheFilesThatAreThere) {
  give(kRoot, root_);
  give(kRoot, directory_);
  start();
  EXPECT_THAT(errors(), IsEmpty());
  expectGoodRound(expectedAfter({}, 1));
}

TEST_F(AsNobody, ADirectoryOfSomebodyElseTakesNoNewFileUntilItIsMended) {
  give(kRoot, directory_);
  fs::remove(pathOf(kTables));
  fs::remove(pathOf(kVersions));
  start();
  EXPECT_EQ(serve(), expectedAfter({false, true, true}, 1));
  EXPECT_EQ(roundErrors_, together({saveErrors(kTables), saveErrors(kVersions)}));
  give(kNobody, directory_);
  expectGoodRound(expectedAfter({false, true, true}, 2));
}

TEST_F(AsNobody, ARootThatMayNotBeEnteredCostsAllFilesUntilItIsMended) {
  give(kRoot, root_);
  setMode(root_, 0700);
  start();
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 1));
  EXPECT_EQ(roundErrors_, together({saveErrors(kPids), noDirectoryErrors()}));
  setMode(root_, 0755);
  expectGoodRound(expectedAfter({true, true, true}, 2));
}

}  // namespace
}  // namespace tevra::test
