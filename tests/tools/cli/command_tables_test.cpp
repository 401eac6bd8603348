#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "tests/tools/support/run_tornelctl.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/cli/cli.h"

namespace tevra::tools {
namespace {

using nlohmann::json;
using test::Result;
using test::TemporaryFile;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

Result runTables(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), "tables");
  return test::run(arguments);
}

/** The first line of every table. */
std::vector<std::string> headers(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream in("\n" + text);
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() && std::getline(in, line)) {
      lines.push_back(line);
    }
  }
  return lines;
}

TEST(TablesCommand, PrintsEveryTableOfTheSampleInStreamOrder) {
  const Result result = runTables({test::sample()});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_EQ("", result.err);
  const auto lines = headers(result.out);
  ASSERT_EQ(24U, lines.size());
  EXPECT_EQ("PAT: table id 0x00, transport stream id 1101 (0x044D), version 3, current", lines[0]);
  EXPECT_EQ("TOT: table id 0x73, UTC time 2024-05-17 12:59:55 UTC", lines[1]);
  EXPECT_EQ("CAT: table id 0x01, version 1, current", lines[2]);
  EXPECT_EQ(
      "PMT: table id 0x02, program number 101 (0x0065), version 7, current, PCR PID 257 (0x0101)",
      lines[3]);
}

TEST(TablesCommand, PrintsThePmtOfTheSampleWhole) {
  const Result result = runTables({test::sample(), "--service", "103", "--table", "pmt"});
  EXPECT_EQ(
      "PMT: table id 0x02, program number 103 (0x0067), version 2, current, PCR PID 769 (0x0301)\n"
      "  PID 769 (0x0301), stream type 0x1B (AVC video)\n"
      "    stream_identifier_descriptor (0x52): component tag 0x01\n"
      "    CA_descriptor (0x09): CA system id 0x0071, CA PID 1008 (0x03F0)\n"
      "  PID 770 (0x0302), stream type 0x03 (MPEG-1 audio)\n"
      "    ISO_639_language_descriptor (0x0A)\n"
      "      language deu, audio type 0 (undefined)\n"
      "    stream_identifier_descriptor (0x52): component tag 0x02\n"
      "    CA_descriptor (0x09): CA system id 0x0072, CA PID 1009 (0x03F1), private data 10 20\n"
      "  PID 771 (0x0303), stream type 0x0F (AAC audio in ADTS)\n"
      "    ISO_639_language_descriptor (0x0A)\n"
      "      language spa, audio type 0 (undefined)\n"
      "    stream_identifier_descriptor (0x52): component tag 0x03\n"
      "    AAC_descriptor (0x7C): profile and level 0x29\n"
      "  PID 772 (0x0304), stream type 0x0B (DSM-CC type B)\n"
      "    stream_identifier_descriptor (0x52): component tag 0x04\n"
      "    data_broadcast_id_descriptor (0x66): data broadcast id 0x0006 (data carousel)\n",
      result.out);
}

TEST(TablesCommand, PrintsTextsInUtf8AndTimesToRead) {
  const Result result = runTables({test::sample()});
  EXPECT_THAT(
      result.out,
      AllOf(HasSubstr("  service id 103 (0x0067), running status 4 (running), EIT schedule, EIT "
                      "p/f, scrambled\n"
                      "    service_descriptor (0x48)\n"
                      "      service type 0x16 (AVC SD digital television)\n"
                      "      provider name \"Sample Media\"\n"
                      "      service name \"Kanal Süd\"\n"),
            HasSubstr("  event id 10201 (0x27D9), start time 2024-05-17 13:00:00 UTC, duration "
                      "02:00:00,\n      running status 1 (not running), not scrambled\n"),
            HasSubstr("      event name \"Le phare éteint\"\n"),
            HasSubstr("      frequency 306 MHz\n"),
            HasSubstr("country ESP, region 0, offset +02:00")));
}

TEST(TablesCommand, PrintsNewVersionsOnce) {
  const Result result = runTables({test::sample(), "--table", "PMT", "--service", "102"});
  const auto lines = headers(result.out);
  ASSERT_EQ(2U, lines.size());
  EXPECT_THAT(lines[0], HasSubstr("version 31, current"));
  EXPECT_THAT(lines[1], HasSubstr("version 0, current"));
}

TEST(TablesCommand, TakesSeveralTableNames) {
  const Result again = runTables({test::sample(), "--table", "cat", "--table", "Bat"});
  EXPECT_THAT(headers(again.out), testing::ElementsAre(StartsWith("CAT"), StartsWith("BAT")));
  EXPECT_EQ(again.out, runTables({test::sample(), "--table", "cat,bat"}).out);
}

TEST(TablesCommand, PrintsTheSampleAsJson) {
  const Result result = runTables({test::sample(), "--json"});
  EXPECT_EQ(kExitDone, result.status);
  const json tables = json::parse(result.out);
  ASSERT_EQ(24U, tables.size());
  EXPECT_EQ(json::parse(R"({"table": "PAT", "tableId": 0, "transportStreamId": 1101, "version": 3,
    "currentNext": true, "programs": [
      {"programNumber": 0, "pid": 16, "pidName": "NIT"},
      {"programNumber": 101, "pid": 256, "pidName": "PMT"},
      {"programNumber": 102, "pid": 512, "pidName": "PMT"},
      {"programNumber": 103, "pid": 768, "pidName": "PMT"},
      {"programNumber": 104, "pid": 1024, "pidName": "PMT"}]})"),
            tables.at(0));
  EXPECT_EQ(json::parse(R"({"table": "CAT", "tableId": 1, "version": 1, "currentNext": true,
    "descriptors": [
      {"tag": 9, "name": "CA_descriptor", "data": "0071e701",
       "fields": {"caSystemId": 113, "caPid": 1793}},
      {"tag": 9, "name": "CA_descriptor", "data": "0072e7020102",
       "fields": {"caSystemId": 114, "caPid": 1794, "privateData": "0102"}}]})"),
            tables.at(2));
}

TEST(TablesCommand, JsonHasTheSameTablesAsTheText) {
  const json tables = json::parse(runTables({test::sample(), "--json"}).out);
  const auto lines = headers(runTables({test::sample()}).out);
  ASSERT_EQ(lines.size(), tables.size());
  for (size_t i = 0; i < lines.size(); ++i) {
    EXPECT_EQ(lines[i].substr(0, 3), tables.at(i).at("table"));
  }
}

TEST(TablesCommand, JsonNamesWhatTheStandardNames) {
  const json tables = json::parse(runTables({test::sample(), "--json", "--table", "SDT,EIT"}).out);
  const json& service = tables.at(0).at("services").at(1);
  EXPECT_EQ("running", service.at("runningStatusName"));
  const json& fields = service.at("descriptors").at(0).at("fields");
  EXPECT_EQ(22, fields.at("serviceType"));
  EXPECT_EQ("AVC SD digital television", fields.at("serviceTypeName"));
  EXPECT_EQ("Télé Deux", fields.at("serviceName"));
  const json& event = tables.at(1).at("events").at(0);
  EXPECT_EQ("2024-05-17 12:45:00 UTC", event.at("startTime"));
  EXPECT_EQ("00:45:00", event.at("duration"));
  EXPECT_EQ(false, event.contains("nvod"));
}

TEST(TablesCommand, FailsWithOneLineForAFileWithoutTables) {
  const TemporaryFile file("ts");
  test::PacketWriter writer;
  file.write(std::vector<TsPacket>(8, writer.stream(0x100, 0xFF)));
  const Result result = runTables({file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("tornelctl: " + file.path() + " holds 8 packets, but no complete table\n", result.err);
  EXPECT_EQ("[]\n", runTables({file.path(), "--json"}).out);
}

TEST(TablesCommand, FailsForWhatIsNoTransportStream) {
  const TemporaryFile file("txt");
  file.write(std::string(1000, 'x'));
  const Result result = runTables({file.path()});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_THAT(result.err, HasSubstr("holds no transport stream"));
  EXPECT_THAT(runTables({"/no/such/file.ts"}).err,
              HasSubstr("cannot open /no/such/file.ts: No such file or directory"));
}

TEST(TablesCommand, FailsWhenNoTableIsAsAskedFor) {
  const Result result = runTables({test::sample(), "--service", "999"});
  EXPECT_EQ(kExitFailed, result.status);
  EXPECT_EQ("", result.out);
  EXPECT_EQ("tornelctl: " + test::sample() +
                " holds 24 tables, but none that was asked for; leave out --table and --service "
                "to see all\n",
            result.err);
}

TEST(TablesCommand, ReportsWhatIsWrongWithTheStream) {
  const TemporaryFile file("ts");
  test::PacketWriter writer;
  std::vector<TsPacket> packets = writer.section(0, test::makePat(1, 0, {{1, 0x100}}));
  const auto nit = writer.section(0x10, test::makeSection({0x40, 5, 0, 0, 1}, {0xF0, 0, 0xF0, 0}));
  packets.insert(packets.end(), nit.begin(), nit.end());
  file.write(packets);
  const Result result = runTables({file.path()});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(headers(result.out), testing::ElementsAre(StartsWith("PAT")));
  EXPECT_EQ("table 0x40 of 0 not complete, not shown: 1 section came\n", result.err);
}

TEST(TablesCommand, PrintsTheItalianMultiplex) {
  const std::string path = test::capture("italian-dtt-mpts.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const Result result = runTables({path});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(
      result.out,
      AllOf(
          HasSubstr("      language ITA, audio type 0 (undefined)\n"),
          HasSubstr("      language eng, teletext type 0x02 (subtitle page), page 778\n"),
          HasSubstr("      frequency 498 MHz\n"),
          HasSubstr("logical_channel_descriptor (0x83): assumed owner EACEM\n      service id 3401 "
                    "(0x0D49), visible, channel number 1\n"),
          Not(HasSubstr("shorter than its syntax"))));
}

TEST(TablesCommand, PrintsTheFrenchMultiplex) {
  const std::string path = test::capture("french-dtt-si-only.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const Result result = runTables({path, "--json"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.err, HasSubstr("with a wrong CRC, dropped"));
  size_t problems = 0;
  for (const json& table : json::parse(result.out)) {
    for (const json& event : table.value("events", json::array())) {
      for (const json& descriptor : event.at("descriptors")) {
        problems += descriptor.contains("fields") ? 0 : 1;
      }
    }
  }
  EXPECT_EQ(0U, problems);
}

TEST(TablesCommand, PrintsTheScrambledServices) {
  const std::string path = test::capture("two-services-scrambled.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const Result result = runTables({path, "--table", "SDT,CAT"});
  EXPECT_EQ(kExitDone, result.status);
  EXPECT_THAT(result.out, AllOf(HasSubstr("service name \"Srv_2\""), HasSubstr("CAT: table id")));
}

}  // namespace
}  // namespace tevra::tools
