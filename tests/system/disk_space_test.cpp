#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/mount.h>

#include <filesystem>
#include <map>
#include <string>

#include "tests/system/disk_faults.h"
#include "tests/system/mounted_tmpfs.h"

// A configuration root that is read-only, or full.

namespace tevra::test {
namespace {

namespace fs = std::filesystem;

using testing::Contains;
using testing::IsEmpty;
using testing::Not;
using thrift::in_module::TableStore;
using thrift::in_module::TableStoreFile;

class MountedRoot : public DiskFaults {
 protected:
  MountedRoot() { fs::create_directories(root_); }

  void SetUp() override {
    if (!MountedTmpfs::whyNot().empty()) {
      GTEST_SKIP() << MountedTmpfs::whyNot();
    }
  }
};

using ReadOnlyRoot = MountedRoot;

TEST_F(ReadOnlyRoot, IsReadAndCostsNothingButTheSavesUntilItIsWritable) {
  const MountedTmpfs disk(root_, "size=1m,mode=0755");
  writeGoodFiles();
  const std::string before = readText(pathOf(kTables));
  disk.makeReadOnly();
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedAfter({}, 1));
  EXPECT_EQ(roundErrors_,
            together({saveErrors(kPids, false), saveErrors(kTables), saveErrors(kVersions)}));
  EXPECT_EQ(readText(pathOf(kTables)), before);
  disk.makeWritable();
  expectGoodRound(expectedAfter({}, 2));
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedAfter({}, 3));
}

TEST_F(ReadOnlyRoot, ThatIsEmptyIsServedFromAllTheSame) {
  const MountedTmpfs disk(root_, "size=1m,mode=0755");
  disk.makeReadOnly();
  start();
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 1));
  EXPECT_EQ(roundErrors_, together({saveErrors(kPids), noDirectoryErrors()}));
  disk.makeWritable();
  expectGoodRound(expectedAfter({true, true, true}, 2));
}

TEST_F(MountedRoot, AFileThatIsAMountPointIsWrittenWhereItLies) {
  writeGoodFiles();
  const std::string file = pathOf(kTables);
  ASSERT_EQ(mount(file.c_str(), file.c_str(), nullptr, MS_BIND, nullptr), 0);
  start();
  expectGoodRound(expectedAfter({}, 1));
  EXPECT_FALSE(fs::exists(file + ".new"));
  EXPECT_EQ(umount2(file.c_str(), MNT_DETACH), 0);
}

/** Services 1 to `last`, each with an output of its own, on a disk of few blocks. */
class SmallDisk : public MountedRoot {
 protected:
  static constexpr const char* kSmall = "size=16k,mode=0755";
  static constexpr int32_t kServices = 80;

  static int32_t serviceId(int32_t service) { return 1000 + service; }

  /** Asks for the output of `service` under a name of `round`, and takes its version down. */
  void request(ControlClient& client, int32_t service, int32_t round) {
    PMT pmt = radioPmt();
    pmt.programNumber = serviceId(service);
    client->setPMT(pmt);
    SrvOutputRequest request = radioRequest();
    request.inputSID = pmt.programNumber;
    request.outputs[0].serviceName = "Radio " + std::to_string(round);
    versions_[service] = onlyOutput(client, request).outputTables.dvbTables.sdt.version;
  }

  /** True when a table save failed on the way. */
  bool requestAll(int32_t round) {
    ControlClient client;
    const Lines lines = daemon().linesOf([&] {
      for (int32_t service = 1; service <= kServices; ++service) {
        request(client, service, round);
      }
    });
    return timesIn(lines, saveErrors(kTables)[1]) > 0;
  }

  std::map<int32_t, int32_t> versions_;  ///< of the SDT, by service
};

TEST_F(SmallDisk, FillsUpWhileTheVersionsGoOn) {
  const MountedTmpfs disk(root_, kSmall);
  start();
  ASSERT_TRUE(requestAll(1));
  for (int32_t round = 2; round <= 4; ++round) {
    EXPECT_TRUE(requestAll(round));
    for (int32_t service = 1; service <= kServices; ++service) {
      ASSERT_EQ(versions_[service], round) << service;
    }
  }
}

TEST_F(SmallDisk, KeepsTheLastFileThatFittedUntilThereIsRoom) {
  const MountedTmpfs disk(root_, kSmall);
  start();
  ASSERT_TRUE(requestAll(1));
  const auto kept = readRecord<TableStoreFile>(pathOf(kTables)).tableStores;
  ASSERT_GT(kept.size(), 5U);
  ASSERT_LT(kept.size(), size_t{kServices - 5});
  ASSERT_TRUE(requestAll(2));
  EXPECT_EQ(readRecord<TableStoreFile>(pathOf(kTables)).tableStores, kept);
  start();
  EXPECT_THAT(errors(), Not(Contains(loadErrors(kTables)[0])));
  disk.makeWritable("size=1m");
  EXPECT_FALSE(requestAll(3));
  for (int32_t service = 1; service <= kServices; ++service) {
    EXPECT_EQ(versions_[service], kept.count(serviceId(service)) == 1 ? 2 : 1) << service;
  }
  EXPECT_EQ(readRecord<TableStoreFile>(pathOf(kTables)).tableStores.size(), size_t{kServices});
}

/** Files that leave no block free on the disk below `root`. */
Lines fill(const std::string& root) {
  Lines files;
  while (fs::space(root).available > 0) {
    files.push_back(root + "/ballast" + std::to_string(files.size()));
    writeText(files.back(), std::string(4096, 'x'));
  }
  return files;
}

TEST_F(SmallDisk, ThatIsFullKeepsTheFilesThatItHas) {
  const MountedTmpfs disk(root_, kSmall);
  writeGoodFiles();
  const std::string before = readText(pathOf(kTables));
  const Lines ballast = fill(root_);
  start();
  EXPECT_THAT(errors(), IsEmpty());
  EXPECT_EQ(serve(), expectedAfter({}, 1));
  EXPECT_EQ(roundErrors_,
            together({saveErrors(kPids, false), saveErrors(kTables), saveErrors(kVersions)}));
  EXPECT_EQ(readText(pathOf(kTables)), before);
  fs::remove(ballast.front());
  expectGoodRound(expectedAfter({}, 2));
}

TEST_F(SmallDisk, ThatIsFullTakesNoNewFilesUntilThereIsRoom) {
  const MountedTmpfs disk(root_, kSmall);
  const Lines ballast = fill(root_);
  start();
  EXPECT_EQ(serve(), expectedAfter({true, true, true}, 1));
  EXPECT_EQ(roundErrors_,
            together({saveErrors(kPids), saveErrors(kTables), saveErrors(kVersions)}));
  for (const StoreFile file : kStoreFiles) {
    EXPECT_FALSE(fs::exists(pathOf(file)));
  }
  for (const std::string& file : ballast) {
    fs::remove(file);
  }
  expectGoodRound(expectedAfter({true, true, true}, 2));
}

}  // namespace
}  // namespace tevra::test
