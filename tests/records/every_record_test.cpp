#include <type_traits>

#include <gtest/gtest.h>
#include <thrift/TBase.h>

#include "records/json_protocol.h"
#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

// What holds for every record, of whatever table.

namespace tevra::test {
namespace {

using Flags = std::vector<bool>;

template <class Record>
class EveryRecord : public ::testing::Test {
 protected:
  static constexpr size_t kCount = kMemberCount<Record>;

  /** A record read from a struct that has nothing but the sample's field at `index`: that flag
   * alone is set. */
  static Record withOnly(size_t index) {
    const std::string field = wireFields(binaryOf(sample<Record>())).at(index).bytes;
    return fromBinary<Record>(field + std::string(1, '\0'));
  }

  static Flags onlyFlag(size_t index) {
    Flags flags(kCount, false);
    flags[index] = true;
    return flags;
  }
};

using AllRecords =
    ::testing::Types<Descriptor, PATProgram, PAT, PMTES, PMT, SDTService, SDT, CAT, NITTS, NIT,
                     BATTS, BAT, TOT, EITEvent, EIT, MGTTBL, MGT, VCTChannel, VCT, DVBOutputTables,
                     PIDItem, OutputTables, SPTSConfiguration, AudioLanguage, LastNodeSettings,
                     SIService, TableStore, TableStoreFile, EITTableVersionStore,
                     EITTableVersionStoreFile, PIDRemap, OutputServiceDescription,
                     SrvOutputRequest>;

TYPED_TEST_SUITE(EveryRecord, AllRecords, RecordName);

TYPED_TEST(EveryRecord, IsACopyableClassWithoutBase) {
  static_assert(!std::is_base_of_v<apache::thrift::TBase, TypeParam>);
  static_assert(std::is_copy_constructible_v<TypeParam> && std::is_copy_assignable_v<TypeParam>);
  SUCCEED();
}

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
  EXPECT_EQ(flagsOf(*record), Flags(TestFixture::kCount, false));
  record->~TypeParam();
}

TYPED_TEST(EveryRecord, WritesEveryMemberInOrderWithConsecutiveIds) {
  for (const TypeParam& record : {TypeParam(), sample<TypeParam>()}) {
    const std::vector<WireField> fields = wireFields(binaryOf(record));
    ASSERT_EQ(fields.size(), TestFixture::kCount);
    for (size_t index = 0; index < fields.size(); ++index) {
      EXPECT_EQ(fields[index].id, static_cast<int>(index) + 1);
    }
  }
}

TYPED_TEST(EveryRecord, CarriesEachMemberUnderItsOwnId) {
  const std::vector<WireField> defaults = wireFields(binaryOf(TypeParam()));
  forEachMember<TypeParam>([&](size_t changed, auto member) {
    TypeParam record;
    record.*member = sample<TypeParam>().*member;
    const std::vector<WireField> fields = wireFields(binaryOf(record));
    for (size_t index = 0; index < fields.size(); ++index) {
      EXPECT_EQ(fields[index].bytes != defaults[index].bytes, index == changed)
          << "member " << changed + 1 << " in field " << index + 1;
    }
  });
}

TYPED_TEST(EveryRecord, ReadsEachFieldIntoItsOwnMemberAndSetsItsFlag) {
  const TypeParam whole = sample<TypeParam>();
  for (size_t present = 0; present < TestFixture::kCount; ++present) {
    const TypeParam record = TestFixture::withOnly(present);
    EXPECT_EQ(flagsOf(record), TestFixture::onlyFlag(present));
    forEachMember<TypeParam>([&](size_t index, auto member) {
      EXPECT_EQ(record.*member == whole.*member, index == present) << "member " << index + 1;
      EXPECT_EQ(isDefault(record.*member), index != present) << "member " << index + 1;
    });
  }
}

TYPED_TEST(EveryRecord, SettingMembersLeavesTheFlagsAlone) {
  EXPECT_EQ(flagsOf(sample<TypeParam>()), Flags(TestFixture::kCount, false));
}

TYPED_TEST(EveryRecord, CopyAndAssignmentTakeMembersAndFlagsAsTheyAre) {
  for (size_t present = 0; present < TestFixture::kCount; ++present) {
    const TypeParam source = TestFixture::withOnly(present);
    const TypeParam copy(source);
    TypeParam assigned = sample<TypeParam>();
    assigned = source;
    TypeParam moved(TypeParam{source});
    EXPECT_TRUE(copy == source && assigned == source && moved == source);
    EXPECT_EQ(flagsOf(copy), TestFixture::onlyFlag(present));
    EXPECT_EQ(flagsOf(assigned), TestFixture::onlyFlag(present));
    EXPECT_EQ(flagsOf(moved), TestFixture::onlyFlag(present));
  }
}

TYPED_TEST(EveryRecord, AssignmentOverwritesWhatWasThere) {
  TypeParam record = sample<TypeParam>();
  record = TypeParam();
  EXPECT_TRUE(isDefault(record));
}

TYPED_TEST(EveryRecord, ComparesEveryMember) {
  forEachMember<TypeParam>([&](size_t index, auto member) {
    TypeParam changed = sample<TypeParam>();
    changed.*member = TypeParam().*member;
    EXPECT_FALSE(changed == sample<TypeParam>()) << "member " << index + 1;
  });
}

TYPED_TEST(EveryRecord, RoundTripsThroughTheBinaryProtocol) {
  for (const TypeParam& record : {TypeParam(), sample<TypeParam>()}) {
    const TypeParam read = fromBinary<TypeParam>(binaryOf(record));
    EXPECT_TRUE(read == record) << jsonOf(read);
    EXPECT_EQ(flagsOf(read), Flags(TestFixture::kCount, true));
  }
}

TYPED_TEST(EveryRecord, RoundTripsThroughJson) {
  for (const TypeParam& record : {TypeParam(), sample<TypeParam>()}) {
    const std::string json = jsonOf(record);
    JsonProtocol protocol(memoryOf(json));
    TypeParam read;
    read.read(&protocol);
    EXPECT_TRUE(read == record) << jsonOf(read);
    EXPECT_EQ(flagsOf(read), Flags(TestFixture::kCount, true));
  }
}

TYPED_TEST(EveryRecord, SkipsFieldsItDoesNotKnow) {
  std::string bytes = binaryOf(sample<TypeParam>());
  bytes.pop_back();
  const std::string unknown(
      "\x0C\x00\x63"                  // struct, field 99
      "\x08\x00\x01\x00\x00\x00\x07"  // i32
      "\x00\x00",
      12);
  const auto read = fromBinary<TypeParam>(bytes + unknown);
  EXPECT_TRUE(read == sample<TypeParam>()) << jsonOf(read);
}

}  // namespace
}  // namespace tevra::test
