#include "records/records.h"

#include <type_traits>

#include <gtest/gtest.h>

#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

// What every_record_test.cpp cannot say of all records alike.

namespace tevra::test {
namespace {

static_assert(std::is_same_v<decltype(DVBOutputTables::pat), PAT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::sdt), SDT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::pmt), PMT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::nit), NIT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::cat), CAT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::sdtOther), SDT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::mgt), MGT>);
static_assert(std::is_same_v<decltype(DVBOutputTables::vct), VCT>);
static_assert(std::is_same_v<EITMap, std::map<int32_t, std::map<int32_t, EIT>>>);

TEST(Records, DescriptorsAndPacketsKeepEveryByteValueOnTheWire) {
  std::string everyByte;
  for (int value = 0; value < 256; ++value) {
    everyByte.push_back(static_cast<char>(value));
  }
  Descriptor descriptor;
  descriptor.data = everyByte;
  EXPECT_EQ(wireFields(binaryOf(descriptor))[1].bytes,
            std::string("\x0B\x00\x02\x00\x00\x01\x00", 7) + everyByte);
  OutputTables tables;
  tables.patPackets = {everyByte.substr(0, 188), everyByte.substr(68)};
  EXPECT_EQ(fromBinary<OutputTables>(binaryOf(tables)), tables);
}

TEST(Records, ATimeTravelsInEightBytes) {
  TOT tot;
  tot.utcTime = 0xFFFF235959;  // 23:59:59 on the last day that a 16-bit MJD can tell, 2038-04-22
  EXPECT_EQ(wireFields(binaryOf(tot))[4].bytes,
            std::string("\x0A\x00\x05\x00\x00\x00\xFF\xFF\x23\x59\x59", 11));
}

TEST(Records, ReadingKeepsMembersThatAreAbsent) {
  apache::thrift::protocol::TBinaryProtocol protocol(memoryOf(std::string(1, '\0')));
  PMT pmt = sample<PMT>();
  pmt.read(&protocol);
  EXPECT_EQ(pmt, sample<PMT>());
}

TEST(Records, ReadingSkipsFieldsThatAreNotKnown) {
  std::string bytes = binaryOf(sample<PMT>());
  bytes.pop_back();
  const std::string unknown(
      "\x0C\x00\x63"                  // struct, field 99
      "\x08\x00\x01\x00\x00\x00\x07"  // i32
      "\x00\x00",
      12);
  EXPECT_EQ(fromBinary<PMT>(bytes + unknown), sample<PMT>());
}

}  // namespace
}  // namespace tevra::test
