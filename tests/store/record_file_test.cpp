#include "store/record_file.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <new>
#include <string>
#include <vector>

#include "records/record_file_access.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"
#include "tests/support/lacks_memory.h"
#include "tests/support/sync_recorder.h"

namespace tevra::test {
namespace {

// What the routines are to return, whatever the names of the values.
constexpr int kDone = 0;
constexpr int kNotOpened = -1;
constexpr int kFailed = -2;

template <class Record>
class RecordFile : public fake::PlatformTest {
 protected:
  /** No descriptor is left open, whatever happened. */
  ~RecordFile() override { EXPECT_EQ(openDescriptors(), descriptorsAtStart_); }

  [[nodiscard]] static std::string file() { return path("file"); }

  /** The result of reading a file that holds `content`. */
  int readContent(const std::string& content) {
    writeText(file(), content);
    read_ = Record();
    return readRecordFromFile(file(), read_);
  }

  Record read_;

 private:
  std::ptrdiff_t descriptorsAtStart_ = openDescriptors();
};

TYPED_TEST_SUITE(RecordFile, RecordFiles, RecordName);

TYPED_TEST(RecordFile, WhatIsWrittenIsRead) {
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(sample<TypeParam>())), kDone);
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_), kDone);
  EXPECT_EQ(this->read_, sample<TypeParam>());
}

TYPED_TEST(RecordFile, TheFileIsTheRecordsJsonAndNothingElse) {
  for (const TypeParam& record : {sample<TypeParam>(), TypeParam()}) {
    EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(record)), kDone);
    EXPECT_EQ(readText(this->file()), jsonOf(record));
  }
}

TYPED_TEST(RecordFile, ANewFileIsForItsOwnerAlone) {
  for (const mode_t mask : {mode_t{0}, mode_t{022}, mode_t{077}}) {
    const ScopedUmask umask(mask);
    EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam())), kDone);
    EXPECT_EQ(modeOf(this->file()), 0600U);
    std::filesystem::remove(this->file());
  }
}

TYPED_TEST(RecordFile, WritingTruncatesWhatWasThere) {
  writeText(this->file(), std::string(100000, 'x'));
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam())), kDone);
  EXPECT_EQ(readText(this->file()), jsonOf(TypeParam()));
}

TYPED_TEST(RecordFile, AMissingDirectoryCannotBeWrittenTo) {
  EXPECT_EQ(writeRecordToFile(this->path("none/file"), storedEntries(sample<TypeParam>())),
            kNotOpened);
  EXPECT_FALSE(std::filesystem::exists(this->path("none")));
}

TYPED_TEST(RecordFile, AMissingFileCannotBeRead) {
  this->read_ = sample<TypeParam>();
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_), kNotOpened);
  EXPECT_EQ(this->read_, sample<TypeParam>());
  EXPECT_FALSE(std::filesystem::exists(this->file()));
}

TYPED_TEST(RecordFile, ADirectoryIsNoFile) {
  std::filesystem::create_directory(this->file());
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(sample<TypeParam>())), kNotOpened);
  EXPECT_TRUE(std::filesystem::is_directory(this->file()));
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_), kFailed);
  EXPECT_EQ(this->read_, TypeParam());
}

TYPED_TEST(RecordFile, AFullDeviceFailsWhetherTheRecordFitsTheBufferOrNot) {
  std::filesystem::create_symlink("/dev/full", this->file());
  EXPECT_LT(jsonOf(TypeParam()).size(), kRecordFileBuffer);
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam())), kFailed);
  const auto large = largeSample<TypeParam>();
  EXPECT_GT(jsonOf(large).size(), kRecordFileBuffer);
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(large)), kFailed);
}

TYPED_TEST(RecordFile, LackOfMemoryIsAFailureThatLeavesTheFormerFile) {
  const TypeParam record = sample<TypeParam>();
  const auto entries = storedEntries(record);
  const std::string file = this->file();
  writeText(file, "former");
  int result = kDone;
  size_t allowed = 0;
  clearSyncCalls();
  while (
      lacksMemory(allowed, [&] { EXPECT_NO_THROW(result = writeRecordToFile(file, entries)); })) {
    EXPECT_NE(result, kDone) << allowed;
    EXPECT_EQ(readText(file), "former");
    EXPECT_FALSE(std::filesystem::exists(file + ".new"));
    ++allowed;
  }
  EXPECT_GT(allowed, 2U);
  EXPECT_EQ(result, kDone);
  EXPECT_EQ(readText(file), jsonOf(record));
}

TYPED_TEST(RecordFile, LackOfMemoryForReadingIsRaised) {
  const std::string file = this->file();
  writeText(file, jsonOf(sample<TypeParam>()));
  TypeParam& record = this->read_;
  int result = kFailed;
  size_t allowed = 0;
  while (lacksMemory(allowed, [&] {
    record = TypeParam();
    result = readRecordFromFile(file, record);
  })) {
    EXPECT_EQ(result, kFailed) << allowed;
    ++allowed;
  }
  EXPECT_GT(allowed, 2U);
  EXPECT_EQ(result, kDone);
  EXPECT_EQ(record, sample<TypeParam>());
}

TYPED_TEST(RecordFile, WhatIsNoRecordFails) {
  // Of each kind one: tests/records has what else the protocol refuses.
  for (const char* content :
       {"", "null", R"({"1":{"i32":})", R"({"1":{"map":["i32","rec",1,{"x":{}}]}})",
        R"({"1":{"i8":300}})", R"({"1":{"map":["i32","rec",50000000,{}]}})"}) {
    EXPECT_EQ(this->readContent(content), kFailed) << content;
    EXPECT_EQ(this->read_, TypeParam());
  }
}

TYPED_TEST(RecordFile, TrailingJunkAndTheEmptyRecordAreAccepted) {
  EXPECT_EQ(this->readContent(jsonOf(sample<TypeParam>()) + "\n}junk"), kDone);
  EXPECT_EQ(this->read_, sample<TypeParam>());
  EXPECT_EQ(this->readContent("{}"), kDone);
  EXPECT_EQ(this->read_, TypeParam());
}

TYPED_TEST(RecordFile, NothingIsLogged) {
  EXPECT_EQ(writeRecordToFile(this->path("none/file"), storedEntries(TypeParam())), kNotOpened);
  EXPECT_EQ(this->readContent("x"), kFailed);
  EXPECT_TRUE(fake::logLines().empty());
}

TYPED_TEST(RecordFile, WhyItFailedIsToldOnDemand) {
  std::string reason;
  EXPECT_EQ(writeRecordToFile(this->path("none/file"), storedEntries(TypeParam()), &reason),
            kNotOpened);
  EXPECT_EQ(reason, "cannot open " + this->path("none/file.new") + ": No such file or directory");
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_, &reason), kNotOpened);
  EXPECT_EQ(reason, "cannot open: No such file or directory");
  writeText(this->file(), "x");
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_, &reason), kFailed);
  EXPECT_EQ(reason, "Expected '{'; got 'x'.");
}

/** What holds for the records that are maps of entries. */
template <class Record>
class EntriesFile : public RecordFile<Record> {
 protected:
  /** The sample, which has two entries, and a third with the greatest key. */
  static Record threeEntries() {
    Record record = sample<Record>();
    auto& entries = entriesOf(record);
    entries[INT32_MAX] = entries.begin()->second;
    EXPECT_EQ(entries.size(), 3U);
    return record;
  }
};

TYPED_TEST_SUITE(EntriesFile, StoreFiles, RecordName);

TYPED_TEST(EntriesFile, AnEmptyMapIsWrittenAsARecordWithAnEmptyMap) {
  EXPECT_EQ(writeRecordToFile(this->file(), storedEntries(TypeParam())), kDone);
  EXPECT_EQ(readText(this->file()), "{\"1\":{\"map\":[\"i32\",\"rec\",0,{}]}}");
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_), kDone);
  EXPECT_EQ(this->read_, TypeParam());
}

TYPED_TEST(EntriesFile, WhatWasReadBeforeTheFaultIsKept) {
  const std::string json = jsonOf(this->threeEntries());
  EXPECT_EQ(this->readContent(json.substr(0, json.find("\"2147483647\""))), kFailed);
  EXPECT_EQ(this->read_, sample<TypeParam>());
}

TYPED_TEST(EntriesFile, WhatWasReadBeforeAReadErrorIsKept) {
  const std::string json = jsonOf(this->threeEntries());
  const std::string part = json.substr(0, json.find("\"2147483647\""));
  // With a writer that says nothing more, reading on fails.
  ASSERT_EQ(mkfifo(this->file().c_str(), 0600), 0);
  const int writer = open(this->file().c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(write(writer, part.data(), part.size()), static_cast<ssize_t>(part.size()));
  EXPECT_EQ(readRecordFromFile(this->file(), this->read_), kFailed);
  close(writer);
  EXPECT_EQ(this->read_, sample<TypeParam>());
}

TYPED_TEST(EntriesFile, AFieldOfAnotherTypeIsSkipped) {
  EXPECT_EQ(this->readContent("{\"1\":{\"i32\":5}}"), kDone);
  EXPECT_EQ(this->read_, TypeParam());
}

class RecordFileText : public fake::PlatformTest {};

TEST_F(RecordFileText, OfTheEITVersions) {
  EITTableVersionStoreFile record;
  record.versionStores[3401].restartCounter = 2;
  record.versionStores[3401].versions = {{0x50, 31}, {0x4E, 5}};
  ASSERT_EQ(writeRecordToFile(path("file"), storedEntries(record)), kDone);
  EXPECT_EQ(readText(path("file")),
            "{\"1\":{\"map\":[\"i32\",\"rec\",1,{\"3401\":{\"1\":{\"i32\":2},"
            "\"2\":{\"map\":[\"i32\",\"i32\",2,{\"78\":5,\"80\":31}]}}}]}}");
}

TEST_F(RecordFileText, OfATableStore) {
  TableStoreFile record;
  TableStore& store = record.tableStores[-1];
  store.restartCounter = 4;
  store.pat.currentNext = true;
  store.pmt.descriptors.resize(1);
  store.pmt.descriptors[0].tag = 9;
  store.pmt.descriptors[0].data = std::string("\x00\xFF\x7F", 3);
  ASSERT_EQ(writeRecordToFile(path("file"), storedEntries(record)), kDone);
  EXPECT_EQ(readText(path("file")),
            "{\"1\":{\"map\":[\"i32\",\"rec\",1,{\"-1\":{\"1\":{\"i32\":4},"
            "\"2\":{\"rec\":{\"1\":{\"i32\":0},\"2\":{\"i32\":0},\"3\":{\"tf\":1},"
            "\"4\":{\"lst\":[\"rec\",0]}}},"
            "\"3\":{\"rec\":{\"1\":{\"i32\":0},\"2\":{\"i32\":0},\"3\":{\"i32\":0},"
            "\"4\":{\"tf\":0},\"5\":{\"i32\":0},\"6\":{\"lst\":[\"rec\",0]}}},"
            "\"4\":{\"rec\":{\"1\":{\"i32\":0},\"2\":{\"i32\":0},\"3\":{\"tf\":0},"
            "\"4\":{\"i32\":0},\"5\":{\"lst\":[\"rec\",1,{\"1\":{\"i32\":9},"
            "\"2\":{\"str\":\"AP9/\"}}]},\"6\":{\"lst\":[\"rec\",0]}}}}}]}}");
}

// What a save can write a start can read

class LargeRecordFile : public fake::PlatformTest {
 protected:
  const std::string file_ = path("file");
};

TEST_F(LargeRecordFile, IsRead) {
  TableStoreFile record;
  record.tableStores[1].pat.programs.resize(1024 * 1024 + 1);
  record.tableStores[2].pmt.esList.resize(2);
  ASSERT_EQ(writeRecordToFile(file_, storedEntries(record)), kDone);
  EXPECT_GT(std::filesystem::file_size(file_), size_t{16} * 1024 * 1024);
  TableStoreFile read;
  ASSERT_EQ(readRecordFromFile(file_, read), kDone);
  EXPECT_TRUE(read == record);
}

TEST_F(LargeRecordFile, ThatNoStartWouldReadIsNotSaved) {
  writeText(file_, "former");
  TableStoreFile record;
  record.tableStores[1].pmt.descriptors.emplace_back().data.assign(kMaxRecordFileSize / 4 * 3, 'd');
  std::string reason;
  EXPECT_EQ(writeRecordToFile(file_, storedEntries(record), &reason), kFailed);
  EXPECT_EQ(reason, "more than a start reads");
  EXPECT_EQ(readText(file_), "former");
  EXPECT_FALSE(std::filesystem::exists(file_ + ".new"));
}

}  // namespace
}  // namespace tevra::test
