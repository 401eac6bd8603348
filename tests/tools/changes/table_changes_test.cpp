#include "tools/changes/table_changes.h"

#include <algorithm>

#include <gmock/gmock.h>

#include "tests/tools/support/table_makers.h"
#include "tools/changes/change_text.h"

namespace tevra::tools {
namespace {

using test::caDescriptor;
using test::catRecord;
using test::descriptorRecord;
using test::languageDescriptor;
using test::patRecord;
using test::pmtRecord;
using test::sdtRecord;
using test::serviceDescriptor;
using test::serviceRecord;
using test::streamRecord;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/** The differences as people read them, a sign and a text each. */
std::vector<std::string> lines(const SiTable& from, const SiTable& to) {
  std::vector<std::string> texts;
  for (const ChangeLine& line : changeLines(tableChanges(from, to))) {
    texts.push_back(std::string(1, line.sign) + " " + line.text);
  }
  return texts;
}

TEST(TableChanges, EqualTablesOfAnyKindHaveNone) {
  const std::vector<SiTable> tables = {
      PAT(),
      CAT(),
      PMT(),
      SDT(),
      NIT(),
      BAT(),
      TOT(),
      EIT(),
      patRecord({{0, 16}, {1, 256}}),
      sdtRecord({serviceRecord(1, "Uno"), serviceRecord(1, "Uno")})};
  for (const SiTable& table : tables) {
    EXPECT_THAT(tableChanges(table, table), IsEmpty()) << table.index();
  }
}

TEST(TableChanges, TablesOfDifferentKindsAreNotCompared) {
  EXPECT_THAT(tableChanges(PAT(), PMT()), IsEmpty());
}

TEST(TableChanges, ANewVersionAloneIsOneChange) {
  PAT after = patRecord({{1, 256}});
  after.version = 4;
  const Changes changes = tableChanges(patRecord({{1, 256}}), after);
  ASSERT_THAT(changes, SizeIs(1));
  EXPECT_EQ("version", changes[0].field);
  EXPECT_EQ(3, std::get<Number>(std::get<Field>(changes[0].from).value).value);
  EXPECT_EQ(4, std::get<Number>(std::get<Field>(changes[0].to).value).value);
}

TEST(TableChanges, OfAPatAreItsProgrammesAndItsStream) {
  PAT after = patRecord({{0, 16}, {2, 513}, {3, 768}});
  after.transportStreamId = 9;
  EXPECT_THAT(lines(patRecord({{0, 16}, {1, 256}, {2, 512}}), after),
              ElementsAre("~ transport stream id 1 (0x0001) -> 9 (0x0009)",
                          "- programme 1: PID 256 (0x0100, PMT)",
                          "~ programme 2: PID 512 (0x0200, PMT) -> 513 (0x0201, PMT)",
                          "+ programme 3: PID 768 (0x0300, PMT)"));
}

TEST(TableChanges, FromAndToAnEmptyTableAreAllItsEntries) {
  const PAT full = patRecord({{1, 256}, {2, 512}});
  EXPECT_THAT(lines(patRecord({}), full), ElementsAre("+ programme 1: PID 256 (0x0100, PMT)",
                                                      "+ programme 2: PID 512 (0x0200, PMT)"));
  EXPECT_THAT(lines(full, patRecord({})), ElementsAre("- programme 1: PID 256 (0x0100, PMT)",
                                                      "- programme 2: PID 512 (0x0200, PMT)"));
}

TEST(TableChanges, OfAnEntryThatIsThereTwiceAreTheFirstWithTheFirst) {
  EXPECT_THAT(lines(patRecord({{1, 256}, {1, 257}}), patRecord({{1, 256}, {1, 300}})),
              ElementsAre("~ programme 1: PID 257 (0x0101, PMT) -> 300 (0x012C, PMT)"));
  EXPECT_THAT(lines(patRecord({{1, 256}, {1, 257}}), patRecord({{1, 256}})),
              ElementsAre("- programme 1: PID 257 (0x0101, PMT)"));
}

TEST(TableChanges, AnotherOrderAloneIsOneChange) {
  EXPECT_THAT(
      lines(patRecord({{1, 256}, {2, 512}, {3, 768}}), patRecord({{3, 768}, {1, 256}, {2, 512}})),
      ElementsAre("~ programmes in another order"));
}

TEST(TableChanges, AnEntryInTheMiddleDoesNotReorderTheOthers) {
  EXPECT_THAT(lines(patRecord({{1, 256}, {3, 768}}), patRecord({{1, 256}, {2, 512}, {3, 768}})),
              ElementsAre("+ programme 2: PID 512 (0x0200, PMT)"));
}

TEST(TableChanges, OfAServiceAreOneLine) {
  SDTService after = serviceRecord(101, "Uno HD");
  after.runningStatus = 1;
  after.freeCA = true;
  after.eitSchedule = true;
  after.descriptors = {serviceDescriptor(0x19, "Uno HD")};
  EXPECT_THAT(lines(sdtRecord({serviceRecord(101, "Uno")}), sdtRecord({after})),
              ElementsAre("~ service 101 \"Uno\": running status running -> not running, "
                          "no EIT schedule -> EIT schedule, not scrambled -> scrambled, "
                          "service type digital television -> AVC HD digital television, "
                          "service name \"Uno\" -> \"Uno HD\""));
}

TEST(TableChanges, OfServicesThatComeAndGoSayWhatTheyAre) {
  SDTService scrambled = serviceRecord(2, "Due");
  scrambled.freeCA = true;
  EXPECT_THAT(lines(sdtRecord({serviceRecord(1, "Uno")}), sdtRecord({scrambled})),
              ElementsAre("- service 1 \"Uno\": digital television, running",
                          "+ service 2 \"Due\": digital television, running, scrambled"));
}

TEST(TableChanges, OfAServiceWithoutADescriptorStillNameIt) {
  SDTService bare = serviceRecord(1, "Uno");
  bare.descriptors.clear();
  EXPECT_THAT(lines(sdtRecord({serviceRecord(1, "Uno")}), sdtRecord({bare})),
              ElementsAre("~ service 1 \"Uno\": service_descriptor removed (digital television, "
                          "provider name \"Maker\", service name \"Uno...)"));
  EXPECT_THAT(lines(sdtRecord({bare}), sdtRecord({})), ElementsAre("- service 1: running"));
}

TEST(TableChanges, OfAPmtAreItsStreams) {
  PMT after =
      pmtRecord({streamRecord(0x1B, 502), streamRecord(0x04, 504, {languageDescriptor("fra")}),
                 streamRecord(0x06, 505, {caDescriptor(0x0500, 600)})});
  after.pcrPid = 504;
  EXPECT_THAT(
      lines(
          pmtRecord({streamRecord(0x02, 502), streamRecord(0x04, 504, {languageDescriptor("spa")}),
                     streamRecord(0x03, 503, {languageDescriptor("eng")})}),
          after),
      ElementsAre("~ PCR PID 502 (0x01F6) -> 504 (0x01F8)", "- stream PID 503 (MPEG-1 audio): eng",
                  "~ stream PID 502 (MPEG-2 video): stream type MPEG-2 video -> AVC video",
                  "~ stream PID 504 (MPEG-2 audio): language spa -> fra",
                  "+ stream PID 505 (private PES): CA system id 0x0500, CA PID 600 "
                  "(0x0258)"));
}

TEST(TableChanges, AStreamThatIsEqualOnAnotherPidChangedItsPid) {
  const auto audio = [](int pid) { return streamRecord(0x04, pid, {languageDescriptor("spa")}); };
  EXPECT_THAT(lines(pmtRecord({streamRecord(0x1B, 502), audio(503)}),
                    pmtRecord({streamRecord(0x1B, 502), audio(603)})),
              ElementsAre("~ stream PID 503 (MPEG-2 audio): PID 503 (0x01F7) -> 603 (0x025B)"));
}

TEST(TableChanges, OfDescriptorsOfAStreamSayWhichCameAndWent) {
  const PMT before = pmtRecord({streamRecord(0x04, 504, {languageDescriptor("spa")})});
  EXPECT_THAT(
      lines(before, pmtRecord({streamRecord(
                        0x04, 504, {languageDescriptor("spa"), descriptorRecord(0x52, "\x07")})})),
      ElementsAre("~ stream PID 504 (MPEG-2 audio): stream_identifier_descriptor added "
                  "(component tag 0x07)"));
  EXPECT_THAT(lines(pmtRecord({streamRecord(0x04, 504, {descriptorRecord(0x52, "\x07")})}),
                    pmtRecord({streamRecord(0x04, 504, {descriptorRecord(0x52, "\x08")})})),
              ElementsAre("~ stream PID 504 (MPEG-2 audio): stream_identifier_descriptor component "
                          "tag 0x07 -> 0x08"));
  EXPECT_THAT(lines(pmtRecord({streamRecord(0x04, 504, {descriptorRecord(0xF0, "a")})}),
                    pmtRecord({streamRecord(0x04, 504, {descriptorRecord(0xF0, "b")})})),
              ElementsAre("~ stream PID 504 (MPEG-2 audio): user_defined_descriptor changed"))
      << "a descriptor whose syntax is not known";
}

TEST(TableChanges, OfALanguageDescriptorWithAnotherNumberOfLanguagesAreThatDescriptor) {
  const Descriptor two = descriptorRecord(0x0A, std::string("spa\0eng\0", 8));
  EXPECT_THAT(lines(pmtRecord({streamRecord(0x04, 504, {languageDescriptor("spa")})}),
                    pmtRecord({streamRecord(0x04, 504, {two})})),
              ElementsAre("~ stream PID 504 (MPEG-2 audio): ISO_639_language_descriptor: language "
                          "spa -> language spa, language eng"));
}

TEST(TableChanges, OfCaSystemsAreTheirComingGoingAndPid) {
  EXPECT_THAT(lines(catRecord({caDescriptor(0x0500, 600), caDescriptor(0x0B00, 601)}),
                    catRecord({caDescriptor(0x0B00, 602), caDescriptor(0x1800, 603)})),
              ElementsAre("- CA system 0x0500: CA PID 600 (0x0258)",
                          "~ CA system 0x0B00 CA PID 601 (0x0259) -> 602 (0x025A)",
                          "+ CA system 0x1800: CA PID 603 (0x025B)"));
  PMT before = pmtRecord({});
  PMT after = pmtRecord({});
  after.descriptors = {caDescriptor(0x0500, 600)};
  EXPECT_THAT(lines(before, after), ElementsAre("+ CA system 0x0500: CA PID 600 (0x0258)"));
}

TEST(TableChanges, OfDescriptorsInAnotherOrderAreTheOrder) {
  EXPECT_THAT(lines(catRecord({caDescriptor(1, 600), caDescriptor(2, 601)}),
                    catRecord({caDescriptor(2, 601), caDescriptor(1, 600)})),
              ElementsAre("~ descriptors in another order"));
}

TEST(TableChanges, OfNetworksAndBouquetsAreTheirTransportStreams) {
  NIT nit;
  NIT nitAfter;
  nitAfter.transportStreams.emplace_back().transportStreamId = 4;
  nitAfter.transportStreams.back().originalNetworkId = 8442;
  EXPECT_THAT(lines(nit, nitAfter), ElementsAre("+ transport stream 4 of network 8442"));
  BAT bat;
  bat.transportStreams.emplace_back().transportStreamId = 4;
  BAT batAfter = bat;
  batAfter.transportStreams[0].descriptors = {descriptorRecord(0x41, std::string("\0\1\1", 3))};
  EXPECT_THAT(lines(bat, batAfter),
              ElementsAre("~ transport stream 4 of network 0: service_list_descriptor added "
                          "(service id 1 (0x0001), digital television)"));
}

TEST(TableChanges, OfATotAreItsTimeAndItsOffsets) {
  TOT before = test::totRecord(test::timeAt(0x124500));
  before.descriptors = {
      descriptorRecord(0x58, std::string("ESP\x02\x01\x00\xC0\x79\x01\x00\x00\x02\x00", 13))};
  TOT after = before;
  after.utcTime = test::timeAt(0x124502);
  after.descriptors[0].data[4] = 2;
  const Changes changes = tableChanges(before, after);
  ASSERT_THAT(changes, SizeIs(2));
  EXPECT_EQ("utcTime", changes[0].field);
  EXPECT_EQ("offset", changes[1].field);
  EXPECT_THAT(lines(before, after),
              ElementsAre("~ local_time_offset_descriptor offset +01:00 -> +02:00"))
      << "the time stands in the table's own line";
}

TEST(TableChanges, OfTheLongestListsAreFound) {
  constexpr int kMost = 4095;
  std::vector<SDTService> services;
  std::vector<EITEvent> events;
  for (int i = 0; i < kMost; ++i) {
    services.push_back(serviceRecord(i, "Service " + std::to_string(i)));
    events.push_back(test::eventRecord(i, test::timeAt(0x120000), "Event"));
  }
  std::vector<SDTService> reversed(services.rbegin(), services.rend());
  std::vector<SDTService> renamed = services;
  for (SDTService& service : renamed) {
    service.runningStatus = 1;
  }
  std::vector<EITEvent> moved = events;
  for (EITEvent& event : moved) {
    event.startTime = test::timeAt(0x120500);
  }
  EXPECT_THAT(tableChanges(sdtRecord(services), sdtRecord(reversed)), SizeIs(1));
  EXPECT_THAT(tableChanges(sdtRecord(services), sdtRecord(renamed)), SizeIs(kMost));
  EXPECT_THAT(tableChanges(sdtRecord(services), sdtRecord({})), SizeIs(kMost));
  EXPECT_THAT(tableChanges(test::eitRecord(events), test::eitRecord(moved)), SizeIs(1));
  EXPECT_THAT(tableChanges(test::eitRecord(events), test::eitRecord({})), SizeIs(kMost));
}

}  // namespace
}  // namespace tevra::tools
