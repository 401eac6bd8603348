#include <type_traits>

#include <gtest/gtest.h>
#include <thrift/TBase.h>

#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

// What holds for every record, of whatever table.

namespace tevra::test {
namespace {

template <class Record>
class EveryRecord : public ::testing::Test {
  // Records that derive from TBase are decoded on Thrift's slow path.
  static_assert(!std::is_base_of_v<apache::thrift::TBase, Record>);
};

using AllRecords =
    ::testing::Types<Descriptor, PATProgram, PAT, PMTES, PMT, SDTService, SDT, CAT, NITTS, NIT,
                     BATTS, BAT, TOT, EITEvent, EIT, MGTTBL, MGT, VCTChannel, VCT, DVBOutputTables,
                     PIDItem, OutputTables, SPTSConfiguration, AudioLanguage, LastNodeSettings,
                     SIService, TableStore, TableStoreFile, EITTableVersionStore,
                     EITTableVersionStoreFile, PIDRemap, OutputServiceDescription,
                     SrvOutputRequest>;

TYPED_TEST_SUITE(EveryRecord, AllRecords, RecordName);

template <class Value, class = void>
inline constexpr bool kIsRecord = false;
template <class Value>
inline constexpr bool kIsRecord<Value, std::void_t<decltype(Members<Value>::kName)>> = true;

template <class Value>
bool isDefault(const Value& value) {
  if constexpr (kIsRecord<Value>) {
    bool allDefault = true;
    forEachMember<Value>(
        [&](size_t, auto member) { allDefault = allDefault && isDefault(value.*member); });
    return allDefault;
  } else if constexpr (std::is_integral_v<Value>) {
    return value == Value{};
  } else {
    return value.empty();
  }
}

TYPED_TEST(EveryRecord, IsZeroFalseAndEmptyByDefault) {
  // In memory that held something else before.
  alignas(TypeParam) unsigned char memory[sizeof(TypeParam)];
  std::fill(std::begin(memory), std::end(memory), static_cast<unsigned char>(0xA5));
  const auto* record = new (memory) TypeParam;
  forEachMember<TypeParam>([&](size_t index, auto member) {
    EXPECT_TRUE(isDefault(record->*member)) << "member " << index + 1;
  });
  EXPECT_EQ(flagsOf(*record), std::vector<bool>(kMemberCount<TypeParam>, false));
  record->~TypeParam();
}

TYPED_TEST(EveryRecord, CarriesEachMemberUnderItsOwnIdAndType) {
  const auto whole = sample<TypeParam>();
  EXPECT_EQ(wireTypes(wireFields(binaryOf(whole))), Members<TypeParam>::kTypes);
  const std::vector<WireField> defaults = wireFields(binaryOf(TypeParam()));
  ASSERT_EQ(defaults.size(), kMemberCount<TypeParam>);
  forEachMember<TypeParam>([&](size_t changed, auto member) {
    TypeParam record;
    record.*member = whole.*member;
    const std::vector<WireField> fields = wireFields(binaryOf(record));
    for (size_t index = 0; index < fields.size(); ++index) {
      EXPECT_EQ(fields[index].id, static_cast<int>(index) + 1);
      EXPECT_EQ(fields[index].bytes != defaults[index].bytes, index == changed)
          << "member " << changed + 1 << " in field " << index + 1;
    }
  });
  const auto read = fromBinary<TypeParam>(binaryOf(whole));
  EXPECT_TRUE(read == whole) << jsonOf(read);
  EXPECT_EQ(flagsOf(read), std::vector<bool>(kMemberCount<TypeParam>, true));
}

}  // namespace
}  // namespace tevra::test
