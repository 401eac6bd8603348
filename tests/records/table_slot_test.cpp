#include "records/table_slot.h"

#include <stdexcept>

#include <gtest/gtest.h>

#include "records/records.h"

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
};

PAT pat(int32_t version) {
  PAT table;
  table.version = version;
  return table;
}

TEST(TableSlot, ANewSlotHoldsNothing) {
  const TableSlot<PAT> slot;
  PAT out = pat(9);
  EXPECT_FALSE(copyTable(slot, out));
  EXPECT_EQ(out, pat(9));
}

TEST(TableSlot, ReplacingLeavesTheLastTableAlone) {
  TableSlot<PAT> slot;
  for (const int32_t version : {5, 31, 2}) {
    replaceTable(slot, pat(version));
    ASSERT_EQ(slot.size(), 1U);
    EXPECT_EQ(slot.front().version, version);
  }
}

TEST(TableSlot, TheCopyIsIndependent) {
  TableSlot<PAT> slot;
  PAT source = pat(1);
  source.programs.resize(3);
  replaceTable(slot, source);
  source.programs.clear();
  PAT out;
  ASSERT_TRUE(copyTable(slot, out));
  EXPECT_EQ(out.programs.size(), 3U);
  out.programs.clear();
  EXPECT_EQ(slot.front().programs.size(), 3U);
}

TEST(TableSlot, TheGetterOverwritesEveryMember) {
  TableSlot<PAT> slot;
  replaceTable(slot, pat(1));
  PAT out = pat(7);
  out.transportStreamId = 8;
  out.programs.resize(2);
  ASSERT_TRUE(copyTable(slot, out));
  EXPECT_EQ(out, pat(1));
}

TEST(TableSlot, TheGetterReadsTheLastElement) {
  const TableSlot<PAT> slot = {pat(1), pat(2)};
  PAT out;
  ASSERT_TRUE(copyTable(slot, out));
  EXPECT_EQ(out.version, 2);
}

TEST(TableSlot, ACopyThatFailsLeavesTheSlotEmpty) {
  TableSlot<FragileTable> slot;
  replaceTable(slot, FragileTable(false));
  ASSERT_EQ(slot.size(), 1U);
  EXPECT_THROW(replaceTable(slot, FragileTable(true)), std::runtime_error);
  EXPECT_TRUE(slot.empty());
}

}  // namespace
}  // namespace tevra::test
