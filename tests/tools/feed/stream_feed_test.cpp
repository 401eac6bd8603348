#include "tools/feed/stream_feed.h"

#include <algorithm>
#include <random>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::capture;
using test::RecordingDaemon;
using test::TemporaryFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

std::string errorOf(const std::string& path) {
  RecordingDaemon daemon;
  try {
    StreamFeed(path, daemon);
  } catch (const ToolError& error) {
    return error.what();
  }
  return "no error";
}

std::string faultsOf(const StreamFeed& feed) {
  std::ostringstream out;
  feed.printFaults(out);
  return out.str();
}

/** How many calls begin with `start`. */
long countCalls(const RecordingDaemon& daemon, const std::string& start) {
  return std::count_if(daemon.calls.begin(), daemon.calls.end(), [&start](const std::string& call) {
    return call.compare(0, start.size(), start) == 0;
  });
}

TEST(StreamFeed, SendsTheTablesOfTheFileInStreamOrder) {
  test::PacketWriter writer;
  std::vector<TsPacket> packets;
  const auto add = [&](int pid, const test::Bytes& section) {
    const auto more = writer.section(pid, section);
    packets.insert(packets.end(), more.begin(), more.end());
  };
  add(0x11, test::makeSdt(1, 4, 101, "One"));
  add(0x100, test::makePmt(101, 2, 0x101, {}));  // the PAT has not named it yet
  add(0x00, test::makePat(1, 1, {{101, 0x100}}));
  add(0x100, test::makePmt(101, 2, 0x101, {}));
  add(0x11, test::makeSdt(1, 4, 101, "One"));
  const TemporaryFile file("ts");
  file.write(packets);
  RecordingDaemon daemon;
  const StreamFeed feed(file.path(), daemon);
  EXPECT_THAT(daemon.calls, ElementsAre("setSDT SDT 1 v4", "setPAT PAT 1 v1", "setPMT PMT 101 v2"));
  EXPECT_EQ(packets.size(), feed.packets());
  EXPECT_EQ("One", feed.inventory().service(101).name);
  EXPECT_EQ("", faultsOf(feed));
}

TEST(StreamFeed, ReportsWhatIsWrongWithTheStream) {
  test::PacketWriter writer;
  std::vector<TsPacket> packets = writer.section(0x11, test::makeSdt(1, 4, 101, "One"));
  test::Bytes broken = test::makeSdt(1, 5, 101, "Two");
  broken[20] ^= 1;
  packets.push_back(writer.section(0x11, broken)[0]);
  packets.push_back(writer.section(0x01, test::makeSection({0x01, 0, 1}, {0x09}))[0]);
  packets.push_back(writer.section(0x12, test::makeEit({0x50, 101, 1, 0, 8}, 0, {}))[0]);
  packets.push_back(
      writer.section(0x10, test::makeSection({0x40, 7, 1, 0, 1}, {0xF0, 0, 0xF0, 0}))[0]);
  const TemporaryFile file("ts");
  file.write(packets);
  std::ofstream(file.path(), std::ios::binary | std::ios::app) << "tail";
  RecordingDaemon daemon;
  const StreamFeed feed(file.path(), daemon);
  EXPECT_EQ(
      "4 bytes outside of packets\n"
      "1 section with a wrong CRC, dropped\n"
      "1 section with lengths that do not add up, dropped\n"
      "1 EIT schedule table not complete, not sent\n"
      "table 0x40 of 0 not complete, not sent: 1 section came\n",
      faultsOf(feed));
}

TEST(StreamFeed, SaysWhyAFileIsOfNoUse) {
  EXPECT_THAT(errorOf("/no/such/file"), HasSubstr("cannot open /no/such/file: No such file"));
  EXPECT_THAT(errorOf(testing::TempDir()), HasSubstr("cannot read "));
  const TemporaryFile text("text");
  text.write("This is no transport stream.");
  EXPECT_THAT(errorOf(text.path()), HasSubstr("holds no transport stream"));
  const TemporaryFile empty("empty");
  empty.write("");
  EXPECT_THAT(errorOf(empty.path()), HasSubstr("holds no transport stream"));
  const TemporaryFile stuffing("stuffing");
  stuffing.write(std::vector<TsPacket>(10, test::PacketWriter().stream(kNullPid, 0)));
  EXPECT_THAT(errorOf(stuffing.path()), HasSubstr("10 packets, but no complete table"));
}

TEST(StreamFeed, TellsOfEveryTableAndItsSectionsWhenItHasBeenSent) {
  test::PacketWriter writer;
  std::vector<TsPacket> packets = writer.section(0x11, test::makeSdt(1, 4, 101, "One", 0, 1));
  for (const TsPacket& packet : writer.section(0x11, test::makeSdt(1, 4, 102, "Two", 1, 1))) {
    packets.push_back(packet);
  }
  const TemporaryFile file("ts");
  file.write(packets);
  RecordingDaemon daemon;
  std::vector<std::string> told;
  const auto source = openSource(file.path());
  const StreamFeed feed(
      *source, file.path(), daemon, [](const TsPacket&, size_t) { return true; },
      [&](const SiTable& table, size_t sections) {
        told.push_back(daemon.calls.back() + ", " + std::to_string(sections) + " sections");
        EXPECT_TRUE(std::holds_alternative<SDT>(table));
      });
  EXPECT_THAT(told, ElementsAre("setSDT SDT 1 v4, 2 sections"));
  EXPECT_EQ(0U, feed.faultsByPid().at(0x11).crcErrors);
}

TEST(StreamFeed, PassesOnWhatTheDaemonRaises) {
  RecordingDaemon daemon;
  daemon.beforeCall = [] { throw std::runtime_error("gone"); };
  const TemporaryFile file("ts");
  file.write(test::PacketWriter().section(0x11, test::makeSdt(1, 4, 101, "One")));
  EXPECT_THROW(StreamFeed(file.path(), daemon), std::runtime_error);
}

TEST(StreamFeed, SendsEveryTableOfTheSampleMultiplex) {
  RecordingDaemon daemon;
  const StreamFeed feed(test::sample(), daemon);
  EXPECT_THAT(
      daemon.calls,
      IsSupersetOf(
          {"setPAT PAT 1101 v3", "setCAT CAT v1", "setPMT PMT 101 v7", "setPMT PMT 102 v31",
           "setPMT PMT 102 v0", "setPMT PMT 103 v2", "setPMT PMT 104 v12", "setSDT SDT 1101 v5",
           "setNIT NIT 65281 v2", "setBAT BAT 65296 v9", "setEITPresentFollowing EIT 101/0x4E v20",
           "setEITPresentFollowing EIT 102/0x4E v14", "setEITPresentFollowing EIT 102/0x4E v15",
           "setEITSchedule EIT 101/0x50 v4", "setEITSchedule EIT 102/0x50 v11",
           "setEITSchedule EIT 103/0x50 v0", "setEITSchedule EIT 104/0x50 v8"}));
  EXPECT_EQ(5, countCalls(daemon, "setTOT"));
  EXPECT_EQ(24U, feed.tables().sent()) << "nothing twice";
  EXPECT_EQ("", faultsOf(feed));
  EXPECT_EQ("Télé Deux", feed.inventory().service(102).name);
  EXPECT_EQ("Kanal Süd", feed.inventory().service(103).name);
}

TEST(StreamFeed, SendsTheTablesOfAnItalianMultiplex) {
  const std::string path = capture("italian-dtt-mpts.ts");
  SKIP_WITHOUT_CAPTURE(path);
  RecordingDaemon daemon;
  const StreamFeed feed(path, daemon);
  EXPECT_EQ(1, countCalls(daemon, "setPAT PAT 18432 v0"));
  EXPECT_EQ(8, countCalls(daemon, "setPMT"));
  EXPECT_EQ(1, countCalls(daemon, "setSDT SDT 18432 v26"));
  EXPECT_EQ(1, countCalls(daemon, "setNIT NIT 12289 v10"));
  EXPECT_EQ(7, countCalls(daemon, "setEITPresentFollowing"));
  EXPECT_EQ(0, countCalls(daemon, "setCAT"));
  EXPECT_EQ(18U, feed.tables().sent());
  const ServiceSummary service = feed.inventory().service(3401);
  EXPECT_EQ("Rai 1", service.name);
  EXPECT_EQ((std::vector<std::string>{"ita", "Oth", "eng"}), service.audioLanguages);
}

TEST(StreamFeed, SendsTheSchedulesOfAFrenchMultiplexDespiteTheirGaps) {
  const std::string path = capture("french-dtt-si-only.ts");
  SKIP_WITHOUT_CAPTURE(path);
  RecordingDaemon daemon;
  const StreamFeed feed(path, daemon);
  EXPECT_THAT(daemon.calls,
              IsSupersetOf({"setPAT PAT 4 v6", "setSDT SDT 4 v16", "setNIT NIT 8442 v30",
                            "setEITSchedule EIT 1025/0x50 v5", "setEITSchedule EIT 1026/0x50 v5",
                            "setEITSchedule EIT 1031/0x50 v2", "setEITSchedule EIT 1045/0x50 v4",
                            "setEITSchedule EIT 1046/0x50 v5"}));
  EXPECT_EQ(5, countCalls(daemon, "setEITSchedule"));
  EXPECT_EQ(5, countCalls(daemon, "setEITPresentFollowing"));
  EXPECT_EQ(30, countCalls(daemon, "setTOT"));
  EXPECT_EQ(43U, feed.tables().sent());
  EXPECT_EQ("28 sections cut short, dropped\n1 section with a wrong CRC, dropped\n",
            faultsOf(feed));
}

TEST(StreamFeed, SendsTheTablesOfAScrambledMultiplex) {
  const std::string path = capture("two-services-scrambled.ts");
  SKIP_WITHOUT_CAPTURE(path);
  RecordingDaemon daemon;
  const StreamFeed feed(path, daemon);
  EXPECT_EQ(3, countCalls(daemon, "setPAT"));
  EXPECT_EQ(1, countCalls(daemon, "setCAT CAT v1"));
  EXPECT_EQ(1, countCalls(daemon, "setPMT PMT 1 v1"));
  EXPECT_EQ(2, countCalls(daemon, "setPMT PMT 2"));
  EXPECT_EQ(5, countCalls(daemon, "setSDT"));
  EXPECT_EQ(3, countCalls(daemon, "setNIT"));
  EXPECT_EQ(7, countCalls(daemon, "setTOT"));
}

// Any file must come to its end without harm; the sanitizers watch.
TEST(StreamFeed, SurvivesDamagedStreams) {
  TemporaryFile sample("whole");
  const std::string whole = [] {
    std::ifstream file(test::sample(), std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
  }();
  ASSERT_GT(whole.size(), 400'000U);
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    std::string bytes = whole.substr(random() % 200'000, 200'000);
    for (int i = 0; i < 400; ++i) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    bytes.erase(random() % bytes.size(), random() % 100);
    const TemporaryFile file("damaged");
    file.write(bytes);
    RecordingDaemon daemon;
    const StreamFeed feed(file.path(), daemon);
    EXPECT_GT(feed.packets(), 900U);
  }
}

TEST(StreamFeed, SurvivesSectionsOfAnyContentWithARightCrc) {
  std::mt19937 random(11);
  const std::vector<std::pair<int, int>> tables = {{0x00, 0x00}, {0x01, 0x01}, {0x10, 0x40},
                                                   {0x11, 0x42}, {0x11, 0x4A}, {0x12, 0x4E},
                                                   {0x12, 0x50}, {0x20, 0x02}};
  test::PacketWriter writer;
  std::vector<TsPacket> packets = writer.section(0x00, test::makePat(1, 1, {{1, 0x20}}));
  for (int round = 0; round < 4000; ++round) {
    const auto [pid, tableId] = tables[random() % tables.size()];
    test::Bytes payload(random() % 300);
    const uint8_t mask = random() % 2 == 0 ? 0xFF : 0x03;  // small lengths fit more often
    std::generate(payload.begin(), payload.end(),
                  [&] { return static_cast<uint8_t>(random() & mask); });
    const int extension = tableId == 0x00 || tableId == 0x02 ? 1 : static_cast<int>(random() % 4);
    const auto more = writer.section(
        pid, test::makeSection({tableId, extension, static_cast<int>(random() % 32)}, payload));
    packets.insert(packets.end(), more.begin(), more.end());
  }
  const TemporaryFile file("ts");
  file.write(packets);
  RecordingDaemon daemon;
  const StreamFeed feed(file.path(), daemon);
  EXPECT_GT(feed.tables().sent(), 100U);
  EXPECT_THAT(faultsOf(feed), HasSubstr("lengths that do not add up"));
}

}  // namespace
}  // namespace tevra::tools
