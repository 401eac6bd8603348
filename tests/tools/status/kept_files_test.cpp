#include "tools/status/kept_files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <filesystem>
#include <limits>

#include <gmock/gmock.h>

#include "cfdb/pid_allocator.h"
#include "records/records.h"
#include "store/record_file.h"
#include "tests/fakes/fake_platform.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"

namespace tevra::tools {
namespace {

using fake::platform;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;

constexpr int kTypeFive = 5;
constexpr int32_t kHighest = std::numeric_limits<int32_t>::max();
constexpr int32_t kLowest = std::numeric_limits<int32_t>::min();

class KeptFiles : public fake::PlatformTest {
 protected:
  KeptFiles() { std::filesystem::create_directory(path("Tornel")); }

  template <class Record>
  static void save(const std::string& name, const Record& record) {
    ASSERT_EQ(kRecordFileDone, writeRecordToFile(path(name), test::storedEntries(record)));
  }
  static KeptState read(int set = 0) {
    return readKeptState(platform().configurationRoot, set, kTypeFive);
  }
  static std::vector<FileState> states(const KeptState& state) {
    std::vector<FileState> all;
    for (const KeptFile& file : state.files) {
      all.push_back(file.state);
    }
    return all;
  }
};

TableStore storeOf(int32_t restartCounter) {
  TableStore store;
  store.restartCounter = restartCounter;
  store.pat.version = 1;
  store.sdt.version = 2;
  store.pmt.version = 3;
  store.pmt.programNumber = 1201;
  return store;
}

void name(TableStore& store, const std::string& data) {
  Descriptor& descriptor = store.sdt.services.emplace_back().descriptors.emplace_back();
  descriptor.tag = 0x48;
  descriptor.data = data;
}

PIDRemap mapOf(const std::vector<int32_t>& outputs) {
  PIDRemap map;
  map.transportStreamId = 7;
  map.moduleSlot = 3;
  for (const int32_t output : outputs) {
    map.outputToInput[output] = output + 1;
    map.inputToOutput[output + 1] = output;
  }
  return map;
}

TEST_F(KeptFiles, ThatAreNotThereAreAbsentAndNothingElse) {
  const KeptState state = read();
  EXPECT_THAT(states(state),
              ElementsAre(FileState::kAbsent, FileState::kAbsent, FileState::kAbsent));
  EXPECT_FALSE(state.any());
  EXPECT_FALSE(state.pids.has_value());
  EXPECT_THAT(state.services, IsEmpty());
}

TEST_F(KeptFiles, TellVersionsAndStartsOfEveryServiceOfTheirSet) {
  TableStoreFile tables;
  tables.tableStores[101] = storeOf(1);
  name(tables.tableStores[101], {"\x01\x02"
                                 "by\x03"
                                 "Uno",
                                 8});
  save("Tornel/TableStoreFile2", tables);
  EITTableVersionStoreFile eits;
  eits.versionStores[101].versions = {{0x4E, 9}, {0x50, 31}};
  eits.versionStores[102].restartCounter = 3;
  save("Tornel/EITTableVersionStoreFile2", eits);

  const KeptState state = read(2);
  EXPECT_THAT(states(state), ElementsAre(FileState::kAbsent, FileState::kRead, FileState::kRead));
  EXPECT_TRUE(state.any());
  ASSERT_EQ(2U, state.services.size());
  const KeptService& first = state.services.at(101);
  EXPECT_THAT(first.tables->byTableId, ElementsAre(Pair(0x00, 1), Pair(0x02, 3), Pair(0x42, 2)));
  EXPECT_EQ(3, first.tables->startsLeft);
  EXPECT_EQ(1201, first.outputSid);
  EXPECT_EQ("Uno", first.name);
  EXPECT_THAT(first.eits->byTableId, ElementsAre(Pair(0x4E, 9), Pair(0x50, 31)));
  EXPECT_EQ(4, first.eits->startsLeft);
  EXPECT_FALSE(state.services.at(102).tables.has_value());
  EXPECT_EQ(1, state.services.at(102).eits->startsLeft);
}

TEST_F(KeptFiles, TellThePidsOfThePool) {
  save("PIDRemap0", mapOf({101, 102, 103}));
  const KeptState state = read();
  EXPECT_EQ(7, state.pids->transportStreamId);
  EXPECT_EQ(3, state.pids->slot);
  EXPECT_EQ(3U, state.pids->used);
  EXPECT_EQ(103, state.pids->highest);
  ASSERT_TRUE(state.pids->pool.has_value());
  EXPECT_EQ(100, state.pids->pool->first);
  EXPECT_EQ(299, state.pids->pool->last);
}

TEST_F(KeptFiles, ThatCannotBeOfThisTypeOfModuleTellNoPool) {
  save("PIDRemap1", mapOf({501}));  // of a type with 400 PIDs each
  EXPECT_FALSE(read(1).pids->pool.has_value());
  EXPECT_TRUE(readKeptState(platform().configurationRoot, 1, 0).pids->pool.has_value());
  save("PIDRemap1", mapOf({}));
  EXPECT_TRUE(read(1).pids->pool.has_value());
  EXPECT_FALSE(readKeptState(platform().configurationRoot, 1, 4).pids->pool.has_value());
}

TEST_F(KeptFiles, HavePoolsThatAreTheAllocators) {
  for (const int type : {0, 5, 6}) {
    for (const int slot : {3, 7}) {
      for (const int set : {0, 1}) {
        platform().moduleType = type;
        platform().moduleSlot = slot;
        const PidAllocator pids(set);
        const auto pool = pidPoolOf(slot, set, moduleTypeHere());
        ASSERT_TRUE(pool.has_value());
        EXPECT_EQ(pids.pidPoolFirst(), pool->first);
        EXPECT_EQ(pids.pidPoolLast(), pool->last);
      }
    }
  }
}

TEST_F(KeptFiles, ThatAreCutShortTellWhatADaemonWouldKeep) {
  TableStoreFile tables;
  tables.tableStores[101] = storeOf(0);
  tables.tableStores[102] = storeOf(0);
  save("Tornel/TableStoreFile0", tables);
  const std::string whole = tevra::test::readText(path("Tornel/TableStoreFile0"));
  tevra::test::writeText(path("Tornel/TableStoreFile0"), whole.substr(0, whole.size() - 30));
  save("PIDRemap0", mapOf({101}));
  tevra::test::writeText(path("PIDRemap0"), tevra::test::readText(path("PIDRemap0")).substr(0, 90));
  tevra::test::writeText(path("Tornel/EITTableVersionStoreFile0"), "");

  const KeptState state = read();
  EXPECT_THAT(states(state),
              ElementsAre(FileState::kDamaged, FileState::kDamaged, FileState::kDamaged));
  EXPECT_FALSE(state.pids.has_value());
  EXPECT_EQ(1U, state.services.count(101));
  for (const KeptFile& file : state.files) {
    EXPECT_NE("", file.reason) << file.name;
    EXPECT_TRUE(file.saved.has_value()) << file.name;
  }
}

TEST_F(KeptFiles, ThatCannotBeOpenedAreUnreadableAndNotAbsent) {
  // What another user's file is to any user but root, a circle of links is to root, too.
  std::filesystem::create_symlink("PIDRemap0", path("PIDRemap0"));
  std::filesystem::remove(path("Tornel"));
  tevra::test::writeText(path("Tornel"), "a file");
  const KeptState state = read();
  EXPECT_THAT(states(state),
              ElementsAre(FileState::kUnreadable, FileState::kUnreadable, FileState::kUnreadable));
  EXPECT_THAT(state.files[0].reason, HasSubstr("symbolic links"));
  EXPECT_THAT(state.files[1].reason, HasSubstr("Not a directory"));
  EXPECT_FALSE(state.files[0].isForbidden || state.files[1].isForbidden);
  EXPECT_FALSE(state.any());
}

TEST_F(KeptFiles, ThatTheUserMayNotReadAreForbidden) {
  save("PIDRemap0", mapOf({101}));
  std::filesystem::permissions(path("PIDRemap0"), std::filesystem::perms::none);
  std::filesystem::permissions(path("Tornel"), std::filesystem::perms::none);
  const uid_t user = geteuid();
  if (user == 0) {  // who may read everything
    std::filesystem::permissions(platform().configurationRoot, std::filesystem::perms::all);
    ASSERT_EQ(0, seteuid(65534));
  }
  const KeptState state = read();
  EXPECT_EQ(0, seteuid(user));
  std::filesystem::permissions(path("Tornel"), std::filesystem::perms::all);
  EXPECT_THAT(states(state),
              ElementsAre(FileState::kUnreadable, FileState::kUnreadable, FileState::kUnreadable));
  EXPECT_TRUE(state.files[0].isForbidden);
  EXPECT_TRUE(state.files[1].isForbidden);
}

TEST_F(KeptFiles, MayHoldAnyNumbersAndTexts) {
  TableStoreFile tables;
  int32_t service = kLowest;
  for (const std::string& data : {std::string(), std::string("\x01"), std::string("\x01\xFF"),
                                  std::string("\x01\x00", 2), std::string("\x01\x01xAA\x05name")}) {
    tables.tableStores[service] = storeOf(kLowest);
    name(tables.tableStores[service++], data);
  }
  tables.tableStores[kHighest] = storeOf(kHighest);
  save("Tornel/TableStoreFile0", tables);
  PIDRemap map = mapOf({kLowest, kHighest - 1});
  map.moduleSlot = kLowest;
  save("PIDRemap0", map);
  const KeptState state = read();
  EXPECT_EQ(int64_t{4} - kLowest, state.services.at(kLowest).tables->startsLeft);
  EXPECT_EQ(0, state.services.at(kHighest).tables->startsLeft);
  EXPECT_EQ("", state.services.at(kLowest + 2).name);
  EXPECT_EQ(kHighest - 1, state.pids->highest);
  EXPECT_FALSE(state.pids->pool.has_value());
}

TEST_F(KeptFiles, MayBeOfAnyTime) {
  using std::chrono::system_clock;
  save("PIDRemap0", mapOf({101}));
  const auto savedAt = [](time_t seconds) {
    const std::array<timespec, 2> times = {{{seconds, 0}, {seconds, 0}}};
    EXPECT_EQ(0, utimensat(AT_FDCWD, path("PIDRemap0").c_str(), times.data(), 0));
    return read().files[0].saved.value();
  };
  EXPECT_GT(savedAt(10'000'000'000), system_clock::from_time_t(2'000'000'000)) << "year 2286";
  EXPECT_EQ(savedAt(-1), system_clock::from_time_t(0));
}

TEST_F(KeptFiles, AreWrittenNowhere) {
  save("PIDRemap0", mapOf({101}));
  const std::string before = tevra::test::readText(path("PIDRemap0"));
  (void)read();
  EXPECT_EQ(before, tevra::test::readText(path("PIDRemap0")));
  EXPECT_TRUE(std::filesystem::is_empty(path("Tornel")));
  EXPECT_THAT(fake::logLines(), IsEmpty());
}

}  // namespace
}  // namespace tevra::tools
