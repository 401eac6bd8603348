#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <iterator>
#include <random>
#include <string>
#include <utility>

#include "tests/system/disk_faults.h"

// Files with a byte changed or an end missing; every byte in turn is a matter of the readers' own
// tests.

namespace tevra::test {
namespace {

using testing::AnyOf;
using testing::ElementsAreArray;
using testing::IsEmpty;
using testing::ValuesIn;
using thrift::in_module::EITTableVersionStoreFile;
using thrift::in_module::TableStoreFile;

class ADamagedFile : public DiskFaults, public testing::WithParamInterface<StoreFile> {
 protected:
  static constexpr int32_t kOtherServices = 10;

  /** The good files with other services behind the television service, as a daemon writes them. */
  void SetUp() override {
    writeGoodFiles();
    start();
    (void)serve();
    stop();
    auto tables = readRecord<TableStoreFile>(pathOf(kTables));
    auto versions = readRecord<EITTableVersionStoreFile>(pathOf(kVersions));
    for (int32_t service = 1; service <= kOtherServices; ++service) {
      tables.tableStores[1000 + service] = tables.tableStores[kTelevision];
      versions.versionStores[1000 + service] = versions.versionStores[kTelevision];
    }
    writeRecord(pathOf(kTables), tables);
    writeRecord(pathOf(kVersions), versions);
    for (const StoreFile file : kStoreFiles) {
      whole_.at(file) = readText(pathOf(file));
    }
  }

  /** Puts the good files there, but `text` in place of one. */
  void damage(StoreFile file, const std::string& text) const {
    for (const StoreFile each : kStoreFiles) {
      writeText(pathOf(each), each == file ? text : whole_.at(each));
    }
  }

  /** Where the damage begins that leaves the television service as it was. */
  [[nodiscard]] size_t endOfTelevision(StoreFile file) const {
    return whole_.at(file).find(",\"1001\":{");
  }

  /** Serves a round, which saves all files, and again after a restart, without any error. */
  Served expectRepair() {
    const Served served = serve();
    EXPECT_THAT(roundErrors_, IsEmpty());
    expectFilesHold(served);
    start();
    EXPECT_THAT(errors(), IsEmpty());
    const Served next = serve();
    EXPECT_EQ(next.pat, served.pat);
    EXPECT_EQ(next.sdt, (served.sdt + 1) % 32);
    EXPECT_EQ(next.pmt, (served.pmt + 1) % 32);
    EXPECT_EQ(next.eit, (served.eit + 1) % 32);
    EXPECT_EQ(next.videoPid, served.videoPid);
    EXPECT_EQ(next.newPid, served.newPid + 1);
    return served;
  }

  /** What was in files that the damage cannot have touched. */
  void expectOthersKept(const Served& served, StoreFile damaged, bool televisionKept) {
    const Served whole = expectedAfter({}, 2);
    if (damaged != kTables || televisionKept) {
      // Another PID for the PMT is another content of the PAT.
      EXPECT_THAT(served.pat,
                  AnyOf(whole.pat, damaged == kPids ? (whole.pat + 1) % 32 : whole.pat));
      EXPECT_EQ(served.sdt, whole.sdt);
      EXPECT_EQ(served.pmt, whole.pmt);
    }
    if (damaged != kVersions || televisionKept) {
      EXPECT_EQ(served.eit, whole.eit);
    }
    if (damaged != kPids) {
      EXPECT_EQ(served.videoPid, whole.videoPid);
    }
  }

  [[nodiscard]] const std::string& whole(StoreFile file) const { return whole_.at(file); }

  /** How many places are tried. */
  static int places() { return std::getenv("TORNEL_FULL") == nullptr ? 7 : 100; }

  size_t anyPlaceIn(StoreFile file) {
    return std::uniform_int_distribution<size_t>(0, whole(file).size() - 1)(random_);
  }

 private:
  std::array<std::string, 3> whole_;
  std::mt19937 random_{20240517};  // any places do, but the same in every run
};

TEST_P(ADamagedFile, CutShortKeepsWhatStandsBeforeTheCutAndIsRepaired) {
  const StoreFile file = GetParam();
  for (int place = 0; place < places(); ++place) {
    const size_t length = anyPlaceIn(file);
    SCOPED_TRACE("cut to " + std::to_string(length) + " bytes");
    damage(file, whole(file).substr(0, length));
    start();
    EXPECT_THAT(errors(), ElementsAreArray(loadErrors(file)));
    const bool kept = file != kPids && length >= endOfTelevision(file);
    const Served served = expectRepair();
    expectOthersKept(served, file, kept);
    if (file == kPids) {
      EXPECT_EQ(served.videoPid, kOutVideo);
    }
  }
}

TEST_P(ADamagedFile, WithAByteChangedKeepsWhatStandsBeforeItAndIsRepaired) {
  const StoreFile file = GetParam();
  constexpr std::array kChanges = {0x01, 0x80, int{'9'}, int{']'}, int{'"'}};
  for (int place = 0; place < places(); ++place) {
    const size_t offset = anyPlaceIn(file);
    const int change = kChanges.at(static_cast<size_t>(place) % kChanges.size());
    std::string text = whole(file);
    text[offset] =
        static_cast<char>(change == 0x01 || change == 0x80 ? text[offset] ^ change : change);
    SCOPED_TRACE("byte " + std::to_string(offset) + " changed by " + std::to_string(change));
    damage(file, text);
    start();
    EXPECT_THAT(errors(), AnyOf(IsEmpty(), ElementsAreArray(loadErrors(file))));
    expectOthersKept(expectRepair(), file, file != kPids && offset > endOfTelevision(file));
  }
}

INSTANTIATE_TEST_SUITE_P(DiskFaults, ADamagedFile, ValuesIn(kStoreFiles),
                         [](const auto& test) { return std::string(nameOf(test.param)); });

}  // namespace
}  // namespace tevra::test
