#include "store/kept_entry.h"

#include <gtest/gtest.h>

#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

namespace tevra::test {
namespace {

template <class Record>
class KeptEntryOf : public testing::Test {
 protected:
  KeptEntry<Record> entry_{sample<Record>()};
};

using Records = testing::Types<TableStore, EITTableVersionStore>;
TYPED_TEST_SUITE(KeptEntryOf, Records, RecordName);

TYPED_TEST(KeptEntryOf, ARecordHasItsJsonForText) {
  EXPECT_EQ(this->entry_.text(), jsonOf(sample<TypeParam>()));
  EXPECT_EQ(*this->entry_, sample<TypeParam>());
}

TYPED_TEST(KeptEntryOf, ARecordThatStaysKeepsItsText) {
  const char* const made = this->entry_.text().data();
  EXPECT_EQ(this->entry_.text().data(), made);
}

TYPED_TEST(KeptEntryOf, AChangedRecordHasATextOfItsOwn) {
  (void)this->entry_.text();
  this->entry_.change().restartCounter = 4711;
  EXPECT_EQ(this->entry_->restartCounter, 4711);
  EXPECT_EQ(this->entry_.text(), jsonOf(*this->entry_));
}

}  // namespace
}  // namespace tevra::test
