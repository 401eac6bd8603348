#include "records/table_slot.h"

#include <map>
#include <stdexcept>

#include <gtest/gtest.h>

#include "records/records.h"
#include "tests/fakes/fake_platform.h"

namespace tevra::test {
namespace {

/** A table whose copies fail on demand. */
struct FragileTable {
  bool copyFails = false;

  explicit FragileTable(bool fails) : copyFails(fails) {}
  FragileTable(const FragileTable& other) : copyFails(other.copyFails) {
    if (copyFails) {
      throw std::runtime_error("copy");
    }
  }
  FragileTable& operator=(const FragileTable&) = default;
};

PAT pat(int32_t version) {
  PAT table;
  table.version = version;
  return table;
}

constexpr const char* kLine = "kept";

using TableSlotTest = fake::PlatformTest;

TEST_F(TableSlotTest, ANewSlotHoldsNothing) {
  TableSlot<PAT> slot;
  PAT out = pat(9);
  EXPECT_FALSE(slot.copy(out));
  EXPECT_EQ(out, pat(9));
}

TEST_F(TableSlotTest, StoringIsLoggedAndLeavesTheLastTable) {
  TableSlot<PAT> slot;
  PAT out;
  for (const int32_t version : {5, 31, 2}) {
    EXPECT_TRUE(slot.store(pat(version), kLine));
    ASSERT_TRUE(slot.copy(out));
    EXPECT_EQ(out, pat(version));
  }
  EXPECT_EQ(fake::timesLogged(7, kLine), 3);
}

TEST_F(TableSlotTest, TheCopyIsIndependent) {
  TableSlot<PAT> slot;
  PAT source = pat(1);
  source.programs.resize(3);
  slot.store(source, kLine);
  source.programs.clear();
  PAT out;
  ASSERT_TRUE(slot.copy(out));
  EXPECT_EQ(out.programs.size(), 3U);
  out.programs.clear();
  ASSERT_TRUE(slot.copy(out));
  EXPECT_EQ(out.programs.size(), 3U);
}

TEST_F(TableSlotTest, TheGetterOverwritesEveryMember) {
  TableSlot<PAT> slot;
  slot.store(pat(1), kLine);
  PAT out = pat(7);
  out.transportStreamId = 8;
  out.programs.resize(2);
  ASSERT_TRUE(slot.copy(out));
  EXPECT_EQ(out, pat(1));
}

TEST_F(TableSlotTest, ACopyThatFailsLeavesTheSlotEmpty) {
  TableSlot<FragileTable> slot;
  slot.store(FragileTable(false), kLine);
  EXPECT_THROW(slot.store(FragileTable(true), kLine), std::runtime_error);
  FragileTable out(false);
  EXPECT_FALSE(slot.copy(out));
}

TEST_F(TableSlotTest, ClearedTogetherSlotsAndMapsAreEmpty) {
  TableSlot<PAT> slot;
  GuardedTables<std::map<int32_t, PAT>, RecursiveMutex> byNumber;
  slot.store(pat(1), kLine);
  {
    RecursiveMutexLock lock(byNumber);
    byNumber.tables[3] = pat(2);
  }
  clearTogether(slot, byNumber);
  PAT out;
  EXPECT_FALSE(slot.copy(out));
  RecursiveMutexLock lock(byNumber);
  EXPECT_FALSE(copyTable(byNumber.tables, 3, out));
}

TEST(CopyTable, GivesWhatIsUnderTheKeyOrLeavesTheOutputAlone) {
  const std::map<int32_t, PAT> tables = {{3, pat(1)}, {4, pat(2)}};
  PAT out;
  EXPECT_TRUE(copyTable(tables, 4, out));
  EXPECT_EQ(out, pat(2));
  EXPECT_FALSE(copyTable(tables, 5, out));
  EXPECT_EQ(out, pat(2));
}

}  // namespace
}  // namespace tevra::test
