#include "tools/si/table_decoder.h"

#include <gtest/gtest.h>

#include "tests/support/tables.h"
#include "tests/tools/support/table_makers.h"
#include "tests/tools/support/ts_builder.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::descriptor;
using test::descriptorRecord;
using test::makeSection;

/** Decodes the sections and takes the table for what it has to be. */
template <class Table>
Table decoded(const std::vector<Bytes>& sections) {
  std::vector<Section> parsed;
  for (const Bytes& bytes : sections) {
    parsed.push_back(Section::parse(bytes.data(), bytes.size()).value());
  }
  return std::get<Table>(tableOf(std::move(parsed)));
}

const Bytes kEnglish = descriptor(0x0A, {'e', 'n', 'g', 0});
const Descriptor kEnglishRecord = descriptorRecord(0x0A, std::string("eng\0", 4));

/** What every decoded table says of itself. */
template <class Table>
Table current(Table table, int version) {
  table.version = version;
  table.currentNext = true;
  return table;
}

TEST(TableDecoder, DecodesAPatOfTwoSections) {
  EXPECT_EQ(current(tevra::test::makePat(0x1234, {{0, 0x10}, {1, 0x100}, {2, 0x1FFE}}), 30),
            decoded<PAT>({test::makePat(0x1234, 30, {{0, 0x10}, {1, 0x100}}, 0, 1),
                          test::makePat(0x1234, 30, {{2, 0x1FFE}}, 1, 1)}));
}

TEST(TableDecoder, DecodesAPatWithoutProgrammes) {
  EXPECT_EQ(current(tevra::test::makePat(7, {}), 3), decoded<PAT>({test::makePat(7, 3, {})}));
}

TEST(TableDecoder, LeavesOutPatProgrammesOnPid0) {
  EXPECT_EQ(current(tevra::test::makePat(7, {{2, 0x20}}), 3),
            decoded<PAT>({test::makePat(7, 3, {{1, 0}, {2, 0x20}})}));
}

TEST(TableDecoder, DecodesACat) {
  const Bytes ca = descriptor(0x09, {0x00, 0x71, 0xE7, 0x01});
  EXPECT_EQ(current(tevra::test::makeCat({test::caDescriptor(0x0071, 0x701), kEnglishRecord}), 5),
            decoded<CAT>({makeSection({0x01, 0xFFFF, 5, 0, 1}, ca),
                          makeSection({0x01, 0xFFFF, 5, 1, 1}, kEnglish)}));
}

TEST(TableDecoder, DecodesAPmt) {
  const Bytes payload = test::joined({test::be16(0xE101),
                                      test::loop(0xF, descriptor(0x09, {})),
                                      {0x1B},
                                      test::be16(0xE101),
                                      test::loop(0xF, {}),
                                      {0x04},
                                      test::be16(0xE102),
                                      test::loop(0xF, test::joined({kEnglish, kEnglish}))});
  PMT expected =
      tevra::test::makePmt(0x0D49, 0x101,
                           {test::streamRecord(0x1B, 0x101),
                            test::streamRecord(0x04, 0x102, {kEnglishRecord, kEnglishRecord})});
  expected.descriptors = {descriptorRecord(0x09, "")};
  EXPECT_EQ(current(expected, 31), decoded<PMT>({makeSection({0x02, 0x0D49, 31}, payload)}));
}

TEST(TableDecoder, DecodesAnSdtOfTwoSections) {
  const SDT sdt =
      decoded<SDT>({test::makeSdt(9, 2, 101, "One", 0, 1), test::makeSdt(9, 2, 102, "Two", 1, 1)});
  EXPECT_EQ(0x42, sdt.tableId);
  EXPECT_EQ(9, sdt.transportStreamId);
  EXPECT_EQ(2, sdt.version);
  EXPECT_TRUE(sdt.currentNext);
  EXPECT_EQ(0xFF01, sdt.originalNetworkId);
  ASSERT_EQ(2U, sdt.services.size());
  EXPECT_EQ(101, sdt.services[0].serviceId);
  EXPECT_FALSE(sdt.services[0].eitSchedule);
  EXPECT_TRUE(sdt.services[0].eitPresentFollowing);
  EXPECT_EQ(4, sdt.services[0].runningStatus);
  EXPECT_FALSE(sdt.services[0].freeCA);
  EXPECT_EQ(std::vector<Descriptor>{descriptorRecord(0x48, std::string("\x01\x00\x03Two", 6))},
            sdt.services[1].descriptors);
}

TEST(TableDecoder, DecodesANit) {
  const Bytes streams = test::joined({test::be16(11), test::be16(12), test::loop(0xF, kEnglish),
                                      test::be16(21), test::be16(22), test::loop(0xF, {})});
  const NIT nit = decoded<NIT>({makeSection(
      {0x40, 0x2001, 9}, test::joined({test::loop(0xF, descriptor(0x40, test::bytesOf("Net"))),
                                       test::loop(0xF, streams)}))});
  EXPECT_EQ(0x40, nit.tableId);
  EXPECT_EQ(0x2001, nit.extension);
  EXPECT_EQ(0x2001, nit.networkId);
  EXPECT_EQ(9, nit.version);
  EXPECT_TRUE(nit.currentNext);
  EXPECT_EQ(std::vector<Descriptor>{descriptorRecord(0x40, "Net")}, nit.descriptors);
  ASSERT_EQ(2U, nit.transportStreams.size());
  EXPECT_EQ(11, nit.transportStreams[0].transportStreamId);
  EXPECT_EQ(12, nit.transportStreams[0].originalNetworkId);
  EXPECT_EQ(std::vector<Descriptor>{kEnglishRecord}, nit.transportStreams[0].descriptors);
  EXPECT_EQ(21, nit.transportStreams[1].transportStreamId);
}

TEST(TableDecoder, DecodesABat) {
  const Bytes streams = test::joined({test::be16(11), test::be16(12), test::loop(0xF, {})});
  const BAT bat = decoded<BAT>({makeSection(
      {0x4A, 0x3001, 8}, test::joined({test::loop(0xF, kEnglish), test::loop(0xF, streams)}))});
  EXPECT_EQ(0x4A, bat.tableId);
  EXPECT_EQ(0x3001, bat.bouquetId);
  EXPECT_EQ(8, bat.version);
  EXPECT_TRUE(bat.currentNext);
  EXPECT_EQ(std::vector<Descriptor>{kEnglishRecord}, bat.descriptors);
  ASSERT_EQ(1U, bat.transportStreams.size());
  EXPECT_EQ(12, bat.transportStreams[0].originalNetworkId);
}

/** One transport stream of that id behind a descriptor of that text. */
Bytes networkPayload(const std::string& name, int transportStreamId) {
  return test::joined({test::loop(0xF, descriptor(0x40, test::bytesOf(name))),
                       test::loop(0xF, test::joined({test::be16(transportStreamId), test::be16(1),
                                                     test::loop(0xF, {})}))});
}

/** What `table` has of the two payloads above, in order. */
template <class Table>
void expectBothParts(const Table& table) {
  EXPECT_EQ((std::vector<Descriptor>{descriptorRecord(0x40, "One"), descriptorRecord(0x40, "Two")}),
            table.descriptors);
  ASSERT_EQ(2U, table.transportStreams.size());
  EXPECT_EQ(11, table.transportStreams[0].transportStreamId);
  EXPECT_EQ(21, table.transportStreams[1].transportStreamId);
}

TEST(TableDecoder, JoinsTheSectionsOfANit) {
  expectBothParts(decoded<NIT>({makeSection({0x40, 1, 2, 0, 1}, networkPayload("One", 11)),
                                makeSection({0x40, 1, 2, 1, 1}, networkPayload("Two", 21))}));
}

TEST(TableDecoder, JoinsTheSectionsOfABat) {
  expectBothParts(decoded<BAT>({makeSection({0x4A, 1, 2, 0, 1}, networkPayload("One", 11)),
                                makeSection({0x4A, 1, 2, 1, 1}, networkPayload("Two", 21))}));
}

TEST(TableDecoder, JoinsTheSectionsOfAPmt) {
  const auto payload = [](const std::string& text, uint8_t type) {
    return test::joined({test::be16(0xE101),
                         test::loop(0xF, descriptor(0x05, test::bytesOf(text))),
                         {type},
                         test::be16(0xE102),
                         test::loop(0xF, {})});
  };
  const PMT pmt = decoded<PMT>({makeSection({0x02, 101, 2, 0, 1}, payload("One", 2)),
                                makeSection({0x02, 101, 2, 1, 1}, payload("Two", 4))});
  EXPECT_EQ((std::vector<Descriptor>{descriptorRecord(0x05, "One"), descriptorRecord(0x05, "Two")}),
            pmt.descriptors);
  ASSERT_EQ(2U, pmt.esList.size());
  EXPECT_EQ(2, pmt.esList[0].streamType);
  EXPECT_EQ(4, pmt.esList[1].streamType);
}

TEST(TableDecoder, DecodesATot) {
  const TOT tot = decoded<TOT>(
      {test::makeTot(0xEC1F235959, test::joined({kEnglish, descriptor(0x80, {'a'})}))});
  EXPECT_EQ(0x73, tot.tableId);
  EXPECT_EQ(0, tot.extension);
  EXPECT_EQ(0, tot.version);
  EXPECT_TRUE(tot.currentNext);
  EXPECT_EQ(0xEC1F235959, tot.utcTime);
  EXPECT_EQ((std::vector<Descriptor>{kEnglishRecord, descriptorRecord(0x80, "a")}),
            tot.descriptors);
}

TEST(TableDecoder, DecodesAnEit) {
  const Bytes event = test::joined({test::be16(0x7001),
                                    {0xEC, 0x1F, 0x23, 0x59, 0x59, 0x01, 0x30, 0x15},
                                    test::loop(0x9, kEnglish)});
  const EIT eit = decoded<EIT>(
      {makeSection({0x51, 101, 17, 0, 8},
                   test::joined({test::be16(0x1111), test::be16(0x2222), {0x00, 0x53}, event})),
       test::makeEit({0x51, 101, 17, 8, 8}, 8, {5, 6})});
  EXPECT_EQ(0x51, eit.tableId);
  EXPECT_EQ(101, eit.serviceId);
  EXPECT_EQ(17, eit.version);
  EXPECT_TRUE(eit.currentNext);
  EXPECT_EQ(0x1111, eit.transportStreamId);
  EXPECT_EQ(0x2222, eit.originalNetworkId);
  EXPECT_EQ(0, eit.segmentLastSectionNumber);
  EXPECT_EQ(0x53, eit.lastTableId);
  ASSERT_EQ(3U, eit.events.size());
  EXPECT_EQ(0x7001, eit.events[0].eventId);
  EXPECT_EQ(0xEC1F235959, eit.events[0].startTime);
  EXPECT_EQ(0x013015, eit.events[0].duration);
  EXPECT_EQ(4, eit.events[0].runningStatus);
  EXPECT_TRUE(eit.events[0].freeCA);
  EXPECT_FALSE(eit.events[0].nvod);
  EXPECT_EQ(std::vector<Descriptor>{kEnglishRecord}, eit.events[0].descriptors);
  EXPECT_EQ(6, eit.events[2].eventId);
}

TEST(TableDecoder, KnowsAnNvodEventByItsStartTime) {
  const Bytes start = {0xFF, 0xFF, 0xFF, 0xFF, 0xFF};
  for (const int runningStatus : {0, 4}) {
    const Bytes event = test::joined(
        {test::be16(1), start, {0x01, 0x00, 0x00}, test::loop(runningStatus << 1, {})});
    const EIT eit = decoded<EIT>({makeSection({0x4E, 101}, test::joined({Bytes(6, 0), event}))});
    EXPECT_EQ(runningStatus == 0, eit.events.at(0).nvod);
  }
}

TEST(TableDecoder, TakesTheLargestTableInReasonableTime) {
  std::vector<Bytes> sections;
  const Bytes service = test::joined({test::be16(1), {0xFC}, test::loop(0, {})});
  Bytes payload = {0, 1, 0xFF};
  for (int i = 0; i < 201; ++i) {
    payload = test::joined({payload, service});
  }
  for (int number = 0; number < 256; ++number) {
    sections.push_back(makeSection({0x42, 1, 1, number, 255}, payload));
  }
  EXPECT_EQ(256U * 201U, decoded<SDT>(sections).services.size());
}

}  // namespace
}  // namespace tevra::tools
