#include "records/table_slot.h"

#include <chrono>
#include <future>
#include <map>
#include <new>

#include <gtest/gtest.h>

#include "records/records.h"
#include "tests/fakes/fake_platform.h"
#include "tests/records/wire.h"
#include "tests/support/allocation_hook.h"

namespace tevra::test {
namespace {

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

TEST_F(TableSlotTest, TheGetterOverwritesEveryMemberAndItsFlag) {
  TableSlot<PAT> slot;
  slot.store(pat(1), kLine);
  PAT out = pat(7);
  out.transportStreamId = 8;
  out.programs.resize(2);
  out.__isset.programs = true;
  ASSERT_TRUE(slot.copy(out));
  EXPECT_EQ(out, pat(1));
  EXPECT_FALSE(out.__isset.programs);
  slot.store(fromBinary<PAT>(binaryOf(pat(1))), kLine);
  ASSERT_TRUE(slot.copy(out));
  EXPECT_TRUE(out.__isset.programs);
}

/** A PAT whose copy makes one allocation of at least kLargeAllocation bytes. */
PAT largePat() {
  PAT table = pat(21);
  table.programs.resize(50000);
  return table;
}

constexpr size_t kLargeAllocation = size_t{256} * 1024;

TEST_F(TableSlotTest, ACopyThatFailsLeavesTheSlotEmptyAndUnlocked) {
  TableSlot<PAT> slot;
  slot.store(pat(1), kLine);
  const PAT large = largePat();
  {
    const AllocationHook failing(kLargeAllocation, [] { throw std::bad_alloc(); });
    EXPECT_THROW(slot.store(large, kLine), std::bad_alloc);
  }
  EXPECT_EQ(fake::timesLogged(7, kLine), 2);
  PAT out;
  EXPECT_FALSE(slot.copy(out));
  slot.store(large, kLine);
  {
    const AllocationHook failing(kLargeAllocation, [] { throw std::bad_alloc(); });
    EXPECT_THROW((void)slot.copy(out), std::bad_alloc);
  }
  EXPECT_TRUE(slot.copy(out));
  EXPECT_EQ(out, large);
}

TEST_F(TableSlotTest, AReaderWaitsUntilTheSetterIsDone) {
  TableSlot<PAT> slot;
  slot.store(pat(1), kLine);
  const PAT large = largePat();
  PAT out;
  std::future<bool> reader;
  {
    const AllocationHook copying(kLargeAllocation, [&] {
      reader = std::async(std::launch::async, [&] { return slot.copy(out); });
      EXPECT_EQ(reader.wait_for(std::chrono::milliseconds(50)), std::future_status::timeout);
    });
    slot.store(large, kLine);
    ASSERT_TRUE(copying.triggered());
  }
  EXPECT_TRUE(reader.get());
  EXPECT_EQ(out, large);
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
