#include "records/records.h"

#include <algorithm>
#include <type_traits>

#include <gtest/gtest.h>

#include "tests/records/sample_records.h"
#include "tests/records/wire.h"

namespace tevra::test {
namespace {

template <class Record>
std::string typesOf() {
  return wireTypes(wireFields(binaryOf(sample<Record>())));
}

TEST(Records, TypesOfTheDvbTablesOnTheWire) {
  EXPECT_EQ(typesOf<Descriptor>(), "i32 string");
  EXPECT_EQ(typesOf<PATProgram>(), "i32 i32");
  EXPECT_EQ(typesOf<PAT>(), "i32 i32 bool list<struct>");
  EXPECT_EQ(typesOf<PMTES>(), "i32 i32 list<struct>");
  EXPECT_EQ(typesOf<PMT>(), "i32 i32 bool i32 list<struct> list<struct>");
  EXPECT_EQ(typesOf<SDTService>(), "i32 bool bool i32 bool list<struct>");
  EXPECT_EQ(typesOf<SDT>(), "i32 i32 i32 bool i32 list<struct>");
  EXPECT_EQ(typesOf<CAT>(), "i32 bool list<struct>");
  EXPECT_EQ(typesOf<NITTS>(), "i32 i32 list<struct>");
  EXPECT_EQ(typesOf<NIT>(), "i32 i32 i32 i32 bool list<struct> list<struct>");
  EXPECT_EQ(typesOf<BATTS>(), "i32 i32 list<struct>");
  EXPECT_EQ(typesOf<BAT>(), "i32 i32 i32 bool list<struct> list<struct>");
  EXPECT_EQ(typesOf<TOT>(), "i32 i32 i32 bool i64 list<struct>");
  EXPECT_EQ(typesOf<EITEvent>(), "i32 i64 i32 i32 bool bool list<struct>");
  EXPECT_EQ(typesOf<EIT>(), "i32 i32 i32 bool i32 i32 i32 i32 list<struct>");
}

TEST(Records, TypesOfTheAtscTablesOnTheWire) {
  EXPECT_EQ(typesOf<MGTTBL>(), "i32 i32 i32 i32 list<struct>");
  EXPECT_EQ(typesOf<MGT>(), "i32 i32 i32 bool i32 i32 list<struct> list<struct>");
  EXPECT_EQ(typesOf<VCTChannel>(),
            "string i32 i32 i16 i64 i32 i32 i16 bool bool bool bool bool i16 i32 list<struct>");
  EXPECT_EQ(typesOf<VCT>(), "i32 i32 i32 bool i32 bool list<struct> list<struct>");
}

TEST(Records, TypesOfTheOutputRecordsOnTheWire) {
  EXPECT_EQ(typesOf<DVBOutputTables>(), "struct struct struct struct struct struct struct struct");
  EXPECT_EQ(typesOf<PIDItem>(), "i32 i32 i32");
  EXPECT_EQ(typesOf<OutputTables>(),
            "i32 i32 list<string> list<string> list<string> list<string> struct");
  EXPECT_EQ(typesOf<SPTSConfiguration>(), "list<struct> struct");
  EXPECT_EQ(typesOf<AudioLanguage>(), "string");
  EXPECT_EQ(typesOf<LastNodeSettings>(), "i32 i32 i32 list<struct> string i32 i32");
}

TEST(Records, TypesOfTheModulesOwnRecordsOnTheWire) {
  EXPECT_EQ(typesOf<SIService>(), "string");
  EXPECT_EQ(typesOf<TableStore>(), "i32 struct struct struct");
  EXPECT_EQ(typesOf<TableStoreFile>(), "map<i32,struct>");
  EXPECT_EQ(typesOf<EITTableVersionStore>(), "i32 map<i32,i32>");
  EXPECT_EQ(typesOf<EITTableVersionStoreFile>(), "map<i32,struct>");
  EXPECT_EQ(typesOf<PIDRemap>(), "i32 map<i32,i32> map<i32,i32> i32 i32");
  EXPECT_EQ(typesOf<OutputServiceDescription>(), "i32 i32 i32 string i32 i32 i32");
  EXPECT_EQ(typesOf<SrvOutputRequest>(), "i32 map<i32,struct> map<i32,list<struct>>");
}

TEST(Records, MembersOfTheDecodedOutputTablesAreOfTheirKinds) {
  static_assert(std::is_same_v<decltype(DVBOutputTables::pat), PAT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::sdt), SDT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::pmt), PMT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::nit), NIT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::cat), CAT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::sdtOther), SDT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::mgt), MGT>);
  static_assert(std::is_same_v<decltype(DVBOutputTables::vct), VCT>);
  SUCCEED();
}

TEST(Records, EITMapGoesFromServiceToTableToEIT) {
  static_assert(std::is_same_v<EITMap, std::map<int32_t, std::map<int32_t, EIT>>>);
  EITMap eits;
  eits[2][0x51].version = 1;
  eits[2][0x50].version = 2;
  eits[1][0x5F].version = 3;
  EXPECT_EQ(eits.begin()->first, 1);
  EXPECT_EQ(eits[2].begin()->first, 0x50);
}

TEST(Records, MapsTravelInAscendingOrderOfTheirKeys) {
  PIDRemap remap;
  remap.inputToOutput = {{9, 1}, {-1, 2}, {3, 4}};
  EXPECT_EQ(wireFields(binaryOf(remap))[1].bytes, std::string("\x0D\x00\x02\x08\x08\x00\x00\x00\x03"
                                                              "\xFF\xFF\xFF\xFF\x00\x00\x00\x02"
                                                              "\x00\x00\x00\x03\x00\x00\x00\x04"
                                                              "\x00\x00\x00\x09\x00\x00\x00\x01",
                                                              33));
}

TEST(Records, NITCarriesItsNetworkIdBeforeItsVersion) {
  NIT nit;
  nit.tableId = 0x40;
  nit.extension = 0x1111;
  nit.networkId = 0x2222;
  nit.version = 0x1F;
  EXPECT_EQ(binaryOf(nit), std::string("\x08\x00\x01\x00\x00\x00\x40"
                                       "\x08\x00\x02\x00\x00\x11\x11"
                                       "\x08\x00\x03\x00\x00\x22\x22"
                                       "\x08\x00\x04\x00\x00\x00\x1F"
                                       "\x02\x00\x05\x00"
                                       "\x0F\x00\x06\x0C\x00\x00\x00\x00"
                                       "\x0F\x00\x07\x0C\x00\x00\x00\x00\x00",
                                       49));
}

TEST(Records, VirtualChannelsHaveThreeMembersOf16Bits) {
  static_assert(std::is_same_v<decltype(VCTChannel::modulation), int16_t>);
  static_assert(std::is_same_v<decltype(VCTChannel::etmLocation), int16_t>);
  static_assert(std::is_same_v<decltype(VCTChannel::serviceType), int16_t>);
  static_assert(std::is_same_v<decltype(VCTChannel::majorNumber), int32_t>);
  static_assert(std::is_same_v<decltype(VCTChannel::minorNumber), int32_t>);
  VCTChannel channel;
  channel.modulation = 0x0102;
  channel.etmLocation = -2;
  channel.serviceType = INT16_MAX;
  const std::vector<WireField> fields = wireFields(binaryOf(channel));
  EXPECT_EQ(fields[3].bytes, std::string("\x06\x00\x04\x01\x02", 5));
  EXPECT_EQ(fields[7].bytes, std::string("\x06\x00\x08\xFF\xFE", 5));
  EXPECT_EQ(fields[13].bytes, std::string("\x06\x00\x0E\x7F\xFF", 5));
}

TEST(Records, VCTCarriesItsDescriptorsBeforeItsChannels) {
  VCT vct;
  vct.descriptors.resize(1);
  vct.channels.resize(2);
  const VCT read = fromBinary<VCT>(binaryOf(vct));
  const std::vector<WireField> fields = wireFields(binaryOf(vct));
  EXPECT_EQ(fields[6].bytes.substr(0, 8), std::string("\x0F\x00\x07\x0C\x00\x00\x00\x01", 8));
  EXPECT_EQ(fields[7].bytes.substr(0, 8), std::string("\x0F\x00\x08\x0C\x00\x00\x00\x02", 8));
  EXPECT_TRUE(read == vct) << jsonOf(read);
}

TEST(Records, ACopiedPMTIsIndependentOfItsSource) {
  const PMT source = sample<PMT>();
  PMT copy = source;
  copy.esList[0].descriptors[0].data = "changed";
  copy.esList[1].descriptors.clear();
  copy.descriptors[0].tag = -1;
  EXPECT_EQ(source, sample<PMT>());
  PMT assigned;
  assigned = source;
  assigned.esList[1].descriptors[1].tag = -1;
  assigned.esList.pop_back();
  EXPECT_EQ(source, sample<PMT>());
}

TEST(Records, ACopiedTableStoreFileIsIndependentOfItsSource) {
  const TableStoreFile source = sample<TableStoreFile>();
  TableStoreFile copy = source;
  copy.tableStores.begin()->second.pmt.esList[0].descriptors[0].data.clear();
  copy.tableStores.erase(std::prev(copy.tableStores.end()));
  EXPECT_EQ(source, sample<TableStoreFile>());
}

TEST(Records, AssigningARecordToItselfKeepsIt) {
  PMT pmt = sample<PMT>();
  const PMT& same = pmt;
  pmt = same;
  EXPECT_EQ(pmt, sample<PMT>());
}

std::string everyByteValue() {
  std::string bytes;
  for (int value = 0; value < 256; ++value) {
    bytes.push_back(static_cast<char>(value));
  }
  return bytes;
}

TEST(Records, DescriptorDataIsBytesNotText) {
  Descriptor descriptor;
  descriptor.data = std::string("\x00\x01\x00", 3);
  const Descriptor copy = descriptor;
  EXPECT_EQ(copy.data.size(), 3U);
  EXPECT_EQ(copy.data, std::string("\x00\x01\x00", 3));
}

TEST(Records, DescriptorDataKeepsEveryByteValueOnTheWire) {
  Descriptor descriptor;
  descriptor.data = everyByteValue();
  EXPECT_EQ(wireFields(binaryOf(descriptor))[1].bytes,
            std::string("\x0B\x00\x02\x00\x00\x01\x00", 7) + everyByteValue());
  EXPECT_EQ(fromBinary<Descriptor>(binaryOf(descriptor)), descriptor);
}

TEST(Records, PacketsKeepEveryByteValueOnTheWire) {
  OutputTables tables;
  tables.patPackets = {everyByteValue().substr(0, 188)};
  tables.sdtPackets = {everyByteValue().substr(68), std::string(188, '\0')};
  tables.pmtPackets = {std::string(188, '\xFF')};
  EXPECT_EQ(fromBinary<OutputTables>(binaryOf(tables)), tables);
}

// 23:59:59 on the last day that a 16-bit MJD can tell, 2038-04-22.
constexpr int64_t kLatestTime = 0xFFFF235959;

TEST(Records, StartTimeHolds40Bits) {
  static_assert(std::is_same_v<decltype(EITEvent::startTime), int64_t>);
  for (const int64_t time : {int64_t{0x1'00000000}, kLatestTime, int64_t{0xFF'FFFFFFFF}}) {
    EIT eit;
    eit.events.resize(1);
    eit.events[0].startTime = time;
    const EIT copy = eit;
    EXPECT_EQ(copy.events[0].startTime, time);
    EXPECT_EQ(fromBinary<EIT>(binaryOf(copy)).events[0].startTime, time);
  }
}

TEST(Records, UtcTimeHolds40Bits) {
  static_assert(std::is_same_v<decltype(TOT::utcTime), int64_t>);
  TOT tot;
  tot.utcTime = kLatestTime;
  const TOT copy = tot;
  EXPECT_EQ(copy.utcTime, kLatestTime);
  EXPECT_EQ(wireFields(binaryOf(copy))[4].bytes,
            std::string("\x0A\x00\x05\x00\x00\x00\xFF\xFF\x23\x59\x59", 11));
  EXPECT_EQ(fromBinary<TOT>(binaryOf(copy)).utcTime, kLatestTime);
}

TEST(Records, ValuesAreHeldUnmasked) {
  PATProgram program;
  program.programNumber = INT32_MIN;
  program.pid = INT32_MAX;
  EXPECT_EQ(fromBinary<PATProgram>(binaryOf(program)), program);
}

TEST(Records, ReadingKeepsMembersThatAreAbsent) {
  apache::thrift::protocol::TBinaryProtocol protocol(memoryOf(std::string(1, '\0')));
  PMT pmt = sample<PMT>();
  pmt.read(&protocol);
  EXPECT_EQ(pmt, sample<PMT>());
}

}  // namespace
}  // namespace tevra::test
