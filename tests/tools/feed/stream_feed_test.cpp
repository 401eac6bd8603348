#include "tools/feed/stream_feed.h"

#include <algorithm>
#include <random>
#include <sstream>

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/stream/files.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::capture;
using test::RecordingDaemon;
using test::TemporaryFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsSupersetOf;

class StreamFeedTest : public testing::Test {
 protected:
  StreamFeed feed(const std::string& path) {
    return StreamFeed::feed(*openSource(path), path, daemon_);
  }
  /** Feeds what has been built, from a file. */
  StreamFeed feedStream() {
    file_.write(stream_.packets());
    return feed(file_.path());
  }

  std::string errorOf(const std::string& path) {
    try {
      (void)feed(path);
    } catch (const ToolError& error) {
      return error.what();
    }
    return "no error";
  }

  /** How many calls begin with `start`. */
  [[nodiscard]] long countCalls(const std::string& start) const {
    return std::count_if(
        daemon_.calls.begin(), daemon_.calls.end(),
        [&start](const std::string& call) { return call.compare(0, start.size(), start) == 0; });
  }

  RecordingDaemon daemon_;
  test::StreamBuilder stream_;
  const TemporaryFile file_{"ts"};
};

std::string faultsOf(const StreamFeed& feed) {
  std::ostringstream out;
  feed.printFaults(out);
  return out.str();
}

TEST_F(StreamFeedTest, SendsTheTablesOfTheFileInStreamOrder) {
  stream_.add(0x11, test::makeSdt(1, 4, 101, "One"));
  stream_.add(0x100, test::makePmt(101, 2, 0x101, {}));  // the PAT has not named it yet
  stream_.add(0x00, test::makePat(1, 1, {{101, 0x100}}));
  stream_.add(0x100, test::makePmt(101, 2, 0x101, {}));
  stream_.add(0x11, test::makeSdt(1, 4, 101, "One"));
  const StreamFeed stream = feedStream();
  EXPECT_THAT(daemon_.calls,
              ElementsAre("setSDT SDT 1 v4", "setPAT PAT 1 v1", "setPMT PMT 101 v2"));
  EXPECT_EQ(stream_.packets().size(), stream.packets());
  EXPECT_EQ("One", stream.inventory().service(101).name);
  EXPECT_EQ("", faultsOf(stream));
}

TEST_F(StreamFeedTest, ReportsWhatIsWrongWithTheStream) {
  stream_.add(0x11, test::makeSdt(1, 4, 101, "One"));
  test::Bytes broken = test::makeSdt(1, 5, 101, "Two");
  broken[20] ^= 1;
  stream_.add(0x11, broken);
  stream_.add(0x01, test::makeSection({0x01, 0, 1}, {0x09}));
  stream_.add(0x12, test::makeEit({0x50, 101, 1, 0, 8}, 0, {}));
  stream_.add(0x10, test::makeSection({0x40, 7, 1, 0, 1}, {0xF0, 0, 0xF0, 0}));
  file_.write(stream_.packets());
  std::ofstream(file_.path(), std::ios::binary | std::ios::app) << "tail";
  EXPECT_EQ(
      "4 bytes outside of packets\n"
      "1 section with a wrong CRC, dropped\n"
      "1 section with lengths that do not add up, dropped\n"
      "1 EIT schedule table not complete, not sent\n"
      "table 0x40 of 0 not complete, not sent: 1 section came\n",
      faultsOf(feed(file_.path())));
}

TEST_F(StreamFeedTest, ReportsWhatIsWrongWithTheSourceFirst) {
  class Lossy : public InputFile {
   public:
    using InputFile::InputFile;
    [[nodiscard]] std::vector<std::string> faults() const override { return {"2 were lost"}; }
  };
  file_.write(test::contentOf(test::sample()) + "tail");
  Lossy source(file_.path());
  EXPECT_EQ("2 were lost\n4 bytes outside of packets\n",
            faultsOf(StreamFeed::feed(source, "lossy", daemon_)));
}

TEST_F(StreamFeedTest, SaysWhyAFileIsOfNoUse) {
  EXPECT_THAT(errorOf("/no/such/file"), HasSubstr("cannot open /no/such/file: No such file"));
  EXPECT_THAT(errorOf(testing::TempDir()), HasSubstr("cannot read "));
  for (const std::string text : {"This is no transport stream.", ""}) {
    file_.write(text);
    EXPECT_THAT(errorOf(file_.path()), HasSubstr("holds no transport stream")) << text;
  }
  file_.write(std::vector<TsPacket>(10, test::PacketWriter().stream(kNullPid, 0)));
  EXPECT_THAT(errorOf(file_.path()), HasSubstr("10 packets, but no complete table"));
}

TEST_F(StreamFeedTest, PassesOnWhatTheDaemonRaises) {
  daemon_.beforeCall = [] { throw std::runtime_error("gone"); };
  stream_.add(0x11, test::makeSdt(1, 4, 101, "One"));
  EXPECT_THROW((void)feedStream(), std::runtime_error);
}

TEST_F(StreamFeedTest, SendsEveryTableOfTheSampleMultiplex) {
  const StreamFeed stream = feed(test::sample());
  EXPECT_THAT(
      daemon_.calls,
      IsSupersetOf(
          {"setPAT PAT 1101 v3", "setCAT CAT v1", "setPMT PMT 101 v7", "setPMT PMT 102 v31",
           "setPMT PMT 102 v0", "setPMT PMT 103 v2", "setPMT PMT 104 v12", "setSDT SDT 1101 v5",
           "setNIT NIT 65281 v2", "setBAT BAT 65296 v9", "setEITPresentFollowing EIT 101/0x4E v20",
           "setEITPresentFollowing EIT 102/0x4E v14", "setEITPresentFollowing EIT 102/0x4E v15",
           "setEITSchedule EIT 101/0x50 v4", "setEITSchedule EIT 102/0x50 v11",
           "setEITSchedule EIT 103/0x50 v0", "setEITSchedule EIT 104/0x50 v8"}));
  EXPECT_EQ(5, countCalls("setTOT"));
  EXPECT_EQ(24U, stream.tables().sent()) << "nothing twice";
  EXPECT_EQ("", faultsOf(stream));
  EXPECT_EQ("Télé Deux", stream.inventory().service(102).name);
  EXPECT_EQ("Kanal Süd", stream.inventory().service(103).name);
}

TEST_F(StreamFeedTest, SendsTheTablesOfAnItalianMultiplex) {
  const std::string path = capture("italian-dtt-mpts.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const StreamFeed stream = feed(path);
  EXPECT_EQ(1, countCalls("setPAT PAT 18432 v0"));
  EXPECT_EQ(8, countCalls("setPMT"));
  EXPECT_EQ(1, countCalls("setSDT SDT 18432 v26"));
  EXPECT_EQ(1, countCalls("setNIT NIT 12289 v10"));
  EXPECT_EQ(7, countCalls("setEITPresentFollowing"));
  EXPECT_EQ(0, countCalls("setCAT"));
  EXPECT_EQ(18U, stream.tables().sent());
  const ServiceSummary service = stream.inventory().service(3401);
  EXPECT_EQ("Rai 1", service.name);
  EXPECT_EQ((std::vector<std::string>{"ita", "Oth", "eng"}), service.audioLanguages);
}

TEST_F(StreamFeedTest, SendsTheSchedulesOfAFrenchMultiplexDespiteTheirGaps) {
  const std::string path = capture("french-dtt-si-only.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const StreamFeed stream = feed(path);
  EXPECT_THAT(daemon_.calls,
              IsSupersetOf({"setPAT PAT 4 v6", "setSDT SDT 4 v16", "setNIT NIT 8442 v30",
                            "setEITSchedule EIT 1025/0x50 v5", "setEITSchedule EIT 1026/0x50 v5",
                            "setEITSchedule EIT 1031/0x50 v2", "setEITSchedule EIT 1045/0x50 v4",
                            "setEITSchedule EIT 1046/0x50 v5"}));
  EXPECT_EQ(5, countCalls("setEITSchedule"));
  EXPECT_EQ(5, countCalls("setEITPresentFollowing"));
  EXPECT_EQ(30, countCalls("setTOT"));
  EXPECT_EQ(43U, stream.tables().sent());
  EXPECT_EQ("28 sections cut short, dropped\n1 section with a wrong CRC, dropped\n",
            faultsOf(stream));
}

TEST_F(StreamFeedTest, SendsTheTablesOfAScrambledMultiplex) {
  const std::string path = capture("two-services-scrambled.ts");
  SKIP_WITHOUT_CAPTURE(path);
  const StreamFeed stream = feed(path);
  EXPECT_EQ(3, countCalls("setPAT"));
  EXPECT_EQ(1, countCalls("setCAT CAT v1"));
  EXPECT_EQ(1, countCalls("setPMT PMT 1 v1"));
  EXPECT_EQ(2, countCalls("setPMT PMT 2"));
  EXPECT_EQ(5, countCalls("setSDT"));
  EXPECT_EQ(3, countCalls("setNIT"));
  EXPECT_EQ(7, countCalls("setTOT"));
}

// Any file must come to its end without harm; the sanitizers watch.
TEST_F(StreamFeedTest, SurvivesDamagedStreams) {
  const std::string whole = test::contentOf(test::sample());
  ASSERT_GT(whole.size(), 400'000U);
  std::mt19937 random(7);
  for (int round = 0; round < 20; ++round) {
    std::string bytes = whole.substr(random() % 200'000, 200'000);
    for (int i = 0; i < 400; ++i) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    bytes.erase(random() % bytes.size(), random() % 100);
    file_.write(bytes);
    EXPECT_GT(feed(file_.path()).packets(), 900U);
  }
}

TEST_F(StreamFeedTest, SurvivesSectionsOfAnyContentWithARightCrc) {
  std::mt19937 random(11);
  const std::vector<std::pair<int, int>> tables = {{0x00, 0x00}, {0x01, 0x01}, {0x10, 0x40},
                                                   {0x11, 0x42}, {0x11, 0x4A}, {0x12, 0x4E},
                                                   {0x12, 0x50}, {0x20, 0x02}};
  stream_.add(0x00, test::makePat(1, 1, {{1, 0x20}}));
  for (int round = 0; round < 4000; ++round) {
    const auto [pid, tableId] = tables[random() % tables.size()];
    test::Bytes payload(random() % 300);
    const uint8_t mask = random() % 2 == 0 ? 0xFF : 0x03;  // small lengths fit more often
    std::generate(payload.begin(), payload.end(),
                  [&] { return static_cast<uint8_t>(random() & mask); });
    const int extension = tableId == 0x00 || tableId == 0x02 ? 1 : static_cast<int>(random() % 4);
    stream_.add(pid,
                test::makeSection({tableId, extension, static_cast<int>(random() % 32)}, payload));
  }
  const StreamFeed stream = feedStream();
  EXPECT_GT(stream.tables().sent(), 100U);
  EXPECT_THAT(faultsOf(stream), HasSubstr("lengths that do not add up"));
}

TEST_F(StreamFeedTest, OfALoopSeesNothingWrongWithItsSeams) {
  // Its counters do not meet, its last section has no end, and its last packet is cut.
  stream_.add(0x11, test::makeSdt(1, 4, 101, "One"));
  stream_.add(0x11, test::makeSdt(1, 5, 101, "Two"));
  stream_.add(0x12, test::makeEit({0x4E, 101, 1}, 0, std::vector<int>(30, 1)));
  auto packets = stream_.packets();
  ASSERT_GT(packets.size(), 3U);
  packets.resize(3);
  file_.write(packets);
  const auto source = openSource(file_.path());
  LoopedSource looped(*source);
  size_t left = 3 * packets.size();
  const StreamFeed stream = StreamFeed::feed(
      looped, "loop", daemon_,
      [&left](const TsPacket& /*packet*/, size_t /*tablesSent*/) { return left-- != 0; });
  EXPECT_EQ("", faultsOf(stream));
  EXPECT_EQ(10U, stream.packets()) << "three rounds, and the packet that ended it";
  EXPECT_EQ(6, countCalls("setSDT")) << "each round changes it twice";
}

TEST_F(StreamFeedTest, OfALoopWithoutAPacketEnds) {
  file_.write(std::string("no transport stream"));
  const auto source = openSource(file_.path());
  LoopedSource looped(*source);
  EXPECT_THROW((void)StreamFeed::feed(looped, "loop", daemon_), ToolError);
}

}  // namespace
}  // namespace tevra::tools
