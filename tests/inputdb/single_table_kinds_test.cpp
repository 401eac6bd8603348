#include <chrono>
#include <future>
#include <type_traits>

#include <gtest/gtest.h>

#include "platform/module_utils.h"
#include "tests/fakes/fake_platform.h"
#include "tests/inputdb/table_kinds.h"
#include "tests/records/sample_records.h"
#include "tests/support/allocation_hook.h"

// What holds for PAT, SDT, CAT, NIT, BAT and TOT alike; tests/records/table_slot_test.cpp has how
// one is kept.

namespace tevra::test {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr size_t kManyElements = 50000;
constexpr size_t kLargeAllocation = size_t{256} * 1024;

template <class Table>
class SingleTableKinds : public fake::PlatformTest {
 protected:
  static constexpr bool kSurvivesClear = std::is_same_v<Table, TOT>;

  static Table withVersion(int32_t version) {
    Table table = sample<Table>();
    table.version = version;
    return table;
  }

  /** A table whose copy makes one allocation of at least kLargeAllocation bytes. */
  static Table large() {
    Table table;
    table.version = 21;
    Kind<Table>::enlarge(table, kManyElements);
    return table;
  }

  bool holdsNothing() {
    Table out;
    return !Kind<Table>::get(db_, out);
  }

  Table held() {
    Table out;
    EXPECT_TRUE(Kind<Table>::get(db_, out));
    return out;
  }

  InputTableDB db_;
};

using Tables = ::testing::Types<PAT, SDT, CAT, NIT, BAT, TOT>;

TYPED_TEST_SUITE(SingleTableKinds, Tables, RecordName);

TYPED_TEST(SingleTableKinds, AMissLeavesTheOutputUntouched) {
  TypeParam out = this->withVersion(9);
  EXPECT_FALSE(Kind<TypeParam>::get(this->db_, out));
  EXPECT_EQ(out, this->withVersion(9));
}

TYPED_TEST(SingleTableKinds, TheSetterLogsOneDebugLineAndTheLastTableIsHeld) {
  for (const int32_t version : {5, 31, 2, 2}) {
    fake::clearLog();
    EXPECT_TRUE(Kind<TypeParam>::set(this->db_, this->withVersion(version)));
    EXPECT_EQ(this->held(), this->withVersion(version));
    EXPECT_EQ(fake::logLines(),
              (std::vector<fake::LogLine>{{kLogDebug, "", Kind<TypeParam>::kLine}}));
  }
}

TYPED_TEST(SingleTableKinds, StoringOneKindStoresNoOther) {
  Kind<TypeParam>::set(this->db_, sample<TypeParam>());
  int holding = 0;
  const auto count = [&](auto table) { holding += Kind<decltype(table)>::get(this->db_, table); };
  count(PAT());
  count(SDT());
  count(CAT());
  count(NIT());
  count(BAT());
  count(TOT());
  EXPECT_EQ(holding, 1);
  std::vector<PMT> pmts;
  EXPECT_FALSE(this->db_.getInputPMTs(pmts));
  EITMap eits;
  EXPECT_FALSE(this->db_.getInputEITpf(eits));
  EXPECT_FALSE(this->db_.getInputEITsch(eits));
}

TYPED_TEST(SingleTableKinds, ClearEmptiesEveryKindButTheTOT) {
  Kind<TypeParam>::set(this->db_, sample<TypeParam>());
  fake::clearLog();
  this->db_.clear();
  EXPECT_EQ(this->holdsNothing(), !TestFixture::kSurvivesClear);
  EXPECT_TRUE(fake::logLines().empty());
  Kind<TypeParam>::set(this->db_, this->withVersion(3));
  EXPECT_EQ(this->held(), this->withVersion(3));
}

TYPED_TEST(SingleTableKinds, ASetterHoldsNoOtherKindUp) {
  const TypeParam large = this->large();
  std::future<void> others;  // outlives the hook: its end waits for the thread
  const AllocationHook copying(kLargeAllocation, [&] {
    others = std::async(std::launch::async, [this] {
      const auto touch = [this](auto table) {
        if constexpr (!std::is_same_v<decltype(table), TypeParam>) {
          Kind<decltype(table)>::set(this->db_, table);
        }
      };
      touch(PAT());
      touch(SDT());
      touch(CAT());
      touch(NIT());
      touch(BAT());
      touch(TOT());
      this->db_.setInputPMT(PMT());
      this->db_.setInputEITpf(EITMap());
      this->db_.setInputEITsch(EITMap());
    });
    EXPECT_EQ(others.wait_for(seconds(20)), std::future_status::ready);
  });
  Kind<TypeParam>::set(this->db_, large);
  EXPECT_TRUE(copying.triggered());
}

TYPED_TEST(SingleTableKinds, ClearWaitsForASetterOfEveryKindButTheTOT) {
  const TypeParam large = this->large();
  std::future<void> clearing;
  {
    const AllocationHook copying(kLargeAllocation, [&] {
      clearing = std::async(std::launch::async, [this] { this->db_.clear(); });
      const auto status =
          clearing.wait_for(TestFixture::kSurvivesClear ? milliseconds(20000) : milliseconds(50));
      EXPECT_EQ(status == std::future_status::ready, TestFixture::kSurvivesClear);
    });
    Kind<TypeParam>::set(this->db_, large);
    ASSERT_TRUE(copying.triggered());
  }
  clearing.get();
  EXPECT_EQ(this->holdsNothing(), !TestFixture::kSurvivesClear);
}

}  // namespace
}  // namespace tevra::test
