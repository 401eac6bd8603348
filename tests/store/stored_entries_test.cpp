#include "store/stored_entries.h"

#include <gtest/gtest.h>

#include "tests/records/wire.h"
#include "tests/store/store_files.h"

namespace tevra::test {
namespace {

template <class File>
class StoredEntries : public testing::Test {};

TYPED_TEST_SUITE(StoredEntries, StoreFiles, RecordName);

TYPED_TEST(StoredEntries, AreThoseOfTheFile) {
  TypeParam file = sample<TypeParam>();
  const auto entries = storedEntries(file);
  ASSERT_EQ(entries.size(), entriesOf(file).size());
  for (const auto& [key, record] : entriesOf(file)) {
    EXPECT_EQ(*entries.at(key), record);
  }
}

TEST(StoredTablesTest, ATableThatIsReplacedIsInTheText) {
  StoredTables tables(sample<TableStore>());
  EXPECT_EQ(tables.text(), jsonOf(sample<TableStore>()));
  tables.replace(&TableStore::sdt, SDT());
  EXPECT_EQ(tables->sdt, SDT());
  EXPECT_EQ(tables->pmt, sample<TableStore>().pmt);
  EXPECT_EQ(tables.text(), jsonOf(*tables));
}

}  // namespace
}  // namespace tevra::test
