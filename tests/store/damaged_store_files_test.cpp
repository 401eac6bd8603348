#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/store/store_files.h"
#include "tests/support/files.h"

// Every byte of the two files cut off or changed in turn.

namespace tevra::test {
namespace {

template <class Record>
class DamagedStoreFile : public fake::PlatformTest {
 protected:
  DamagedStoreFile() {
    // No single byte changed makes one of these keys another.
    for (const int32_t key : {7, 4021, 1100000}) {
      filler_.fill(entriesOf(whole_)[key]);
    }
    EXPECT_EQ(save(whole_, 0), 0);
    text_ = readText(file());
    for (const auto& [key, entry] : entriesOf(whole_)) {
      const std::string json = jsonOf(entry);
      const size_t start = text_.find(json);
      EXPECT_NE(start, std::string::npos);
      ends_.push_back(start + json.size());
    }
  }

  static std::string file() { return path(nameOf<Record>(0)); }

  /** Loads `content`; the log must say what became of it. */
  int loadContent(const std::string& content) {
    std::filesystem::remove(file());  // a disk may take its time over a file that is truncated
    writeText(file(), content);
    fake::clearLog();
    loaded_ = Record();
    const int result = load(loaded_, 0);
    EXPECT_EQ(fake::logLines(kLogDebug - 1).size(), result == 0 ? 0U : 1U);
    EXPECT_EQ(fake::logged(kLogError, "[MPTS0] Error reading file: " + file()), result != 0);
    return result;
  }

  /** How many entries end at or before `offset`. */
  [[nodiscard]] size_t endedBy(size_t offset) const {
    return static_cast<size_t>(std::upper_bound(ends_.begin(), ends_.end(), offset) -
                               ends_.begin());
  }

  /** The first `count` entries are as they were written. */
  [[nodiscard]] bool firstAreKept(size_t count) {
    auto& loaded = entriesOf(loaded_);
    auto expected = entriesOf(whole_).begin();
    for (size_t entry = 0; entry < count; ++entry, ++expected) {
      const auto found = loaded.find(expected->first);
      if (found == loaded.end() || !(found->second == expected->second)) {
        return false;
      }
    }
    return true;
  }

  /** What was loaded can be aged and saved, and then is a whole file. Saved for a part of the
   * offsets only. */
  void expectRepair(size_t offset) {
    ageEntries(entriesOf(loaded_), [](int32_t, const auto&) {});
    if (offset % 64 != 0) {
      return;
    }
    ASSERT_EQ(save(loaded_, 0), 0);
    EXPECT_EQ(readText(file()), jsonOf(loaded_));
    Record again;
    EXPECT_EQ(load(again, 0), 0);
    EXPECT_EQ(again, loaded_);
  }

  RecordFiller filler_;
  Record whole_;
  std::string text_;
  Record loaded_;

 private:
  std::vector<size_t> ends_;
};

TYPED_TEST_SUITE(DamagedStoreFile, StoreFiles, RecordName);

TYPED_TEST(DamagedStoreFile, IsWholeToBeginWith) {
  EXPECT_EQ(this->loadContent(this->text_), 0);
  EXPECT_EQ(this->loaded_, this->whole_);
}

TYPED_TEST(DamagedStoreFile, CutAnywhereGivesTheEntriesBeforeTheCutAndIsRepaired) {
  for (size_t length = 0; length < this->text_.size(); ++length) {
    SCOPED_TRACE("cut to " + std::to_string(length) + " bytes");
    ASSERT_EQ(this->loadContent(this->text_.substr(0, length)), 1);
    const size_t kept = this->endedBy(length);
    ASSERT_TRUE(this->firstAreKept(kept));
    ASSERT_LE(entriesOf(this->loaded_).size(), kept + 1);
    this->expectRepair(length);
  }
}

/** Changes made to one byte. */
constexpr std::array<char (*)(char), 5> kChanges = {
    [](char byte) { return static_cast<char>(byte ^ 0x01); },
    [](char byte) { return static_cast<char>(byte ^ 0x80); },
    [](char) { return '9'; },
    [](char) { return ']'; },
    [](char) { return '"'; },
};

TYPED_TEST(DamagedStoreFile, WithAnyByteChangedGivesTheEntriesBeforeItAndIsRepaired) {
  std::array<int, 2> results = {};
  for (size_t offset = 0; offset < this->text_.size(); ++offset) {
    for (const auto change : kChanges) {
      std::string text = this->text_;
      text[offset] = change(text[offset]);
      if (text == this->text_) {
        continue;
      }
      SCOPED_TRACE("byte " + std::to_string(offset) + " is " + std::to_string(int{text[offset]}));
      const int result = this->loadContent(text);
      ASSERT_TRUE(result == 0 || result == 1);
      ++results.at(static_cast<size_t>(result));
      ASSERT_TRUE(this->firstAreKept(this->endedBy(offset)));
      this->expectRepair(offset);
    }
  }
  EXPECT_GT(results[0], 0);           // another digit is another value
  EXPECT_GT(results[1], results[0]);  // most of a file is its form
}

}  // namespace
}  // namespace tevra::test
