#include "tools/report/facts/report_collector.h"

#include <algorithm>
#include <random>

#include <gmock/gmock.h>

#include "tests/tools/support/recording_daemon.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/report/page/report_json.h"
#include "tools/report/page/report_page.h"
#include "tools/text/tool_error.h"

namespace tevra::tools::report {
namespace {

using test::RecordingDaemon;
using test::TemporaryFile;
using testing::AllOf;
using testing::ElementsAre;
using testing::Field;
using testing::Gt;
using testing::HasSubstr;
using testing::Lt;

const InputStream& streamOn(const std::vector<InputStream>& streams, int pid) {
  const auto found = std::find_if(streams.begin(), streams.end(),
                                  [pid](const InputStream& stream) { return stream.pid == pid; });
  if (found == streams.end()) {
    throw std::runtime_error("no PID " + std::to_string(pid));
  }
  return *found;
}

std::vector<int> pidsOf(const std::vector<InputStream>& streams) {
  std::vector<int> pids;
  for (const InputStream& stream : streams) {
    pids.push_back(stream.pid);
  }
  return pids;
}

Collected collect(const std::string& path, RecordingDaemon& daemon) {
  return collectReport(*openSource(path), path, daemon);
}

Verdict check(const std::string& path) {
  return checkStream(*openSource(path), path);
}

class ReportOfTheSample : public testing::Test {
 protected:
  ReportOfTheSample() {
    daemon_.answer = {{101, test::sampleAnswer().at(1201)}};
    collected_ = collect(test::sample(), daemon_);
  }

  RecordingDaemon daemon_;
  Collected collected_;
  const Report& report_ = collected_.report;
};

TEST_F(ReportOfTheSample, KnowsWhatTheStreamIs) {
  EXPECT_EQ(10'013U, report_.packets);
  EXPECT_EQ(24U, report_.tablesSent);
  EXPECT_EQ(1101, report_.transportStreamId);
  EXPECT_EQ(0xFF01, report_.originalNetworkId);
  EXPECT_EQ(0xFF01, report_.networkId);
  EXPECT_EQ("Sample Network", report_.networkName);
  EXPECT_EQ("2024-05-17 12:59:55", dateAndTime(report_.firstClock.value()));
  EXPECT_NEAR(9.41, report_.seconds.value(), 0.01);
  EXPECT_NEAR(1'600'000, report_.bitRate(report_.packets).value(), 1000);
  EXPECT_EQ(18U, report_.tables.size());
}

TEST_F(ReportOfTheSample, KnowsHowOftenTablesCameAndHowFarApart) {
  EXPECT_EQ(1U, report_.tables[0].times) << "the PAT has one version";
  EXPECT_EQ(118U, report_.tables[0].arrivals);
  ASSERT_FALSE(report_.intervals.empty());
  EXPECT_EQ("PAT", report_.intervals[0].what);
  EXPECT_EQ(117U, report_.intervals[0].count);
  EXPECT_NEAR(0.08, report_.intervals[0].mean, 0.002);
  const auto pmt = std::find_if(report_.intervals.begin(), report_.intervals.end(),
                                [](const auto& fact) { return fact.what == "PMT"; });
  ASSERT_NE(report_.intervals.end(), pmt);
  EXPECT_THAT(pmt->serviceIds, ElementsAre(101));
}

TEST_F(ReportOfTheSample, PassesAllChecks) {
  ASSERT_EQ(12U, report_.checks.size());
  for (const StreamCheck& check : report_.checks) {
    EXPECT_EQ(CheckResult::kPassed, check.result) << check.number;
  }
}

TEST(ReportCollector, GivesAnOutputTheIntervalsThatThePcrsOfItsPidMake) {
  RecordingDaemon daemon;
  SPTSConfiguration answer = test::sampleAnswer().at(1201);
  answer.pidItems.at(1).inputPid = 0x101;
  daemon.answer = {{101, answer}, {102, answer}};  // both by the same PCRs
  const Report report = collect(test::sample(), daemon).report;
  for (const size_t place : {0U, 1U}) {
    const std::vector<IntervalFact>& intervals = report.services[place].output.value().intervals;
    ASSERT_EQ(4U, intervals.size());
    const int serviceId = 101 + static_cast<int>(place);
    const auto is = [serviceId](const char* what, int pid, double longest) {
      return AllOf(Field(&IntervalFact::what, what), Field(&IntervalFact::pid, pid),
                   Field(&IntervalFact::serviceIds, ElementsAre(serviceId)),
                   Field(&IntervalFact::longest, AllOf(Gt(longest / 2), Lt(longest))));
    };
    EXPECT_THAT(intervals, ElementsAre(is("PAT", 0, 0.1), is("PMT", 501, 0.1), is("SDT", 17, 1),
                                       is("PCR", 502, 0.04)));
  }
}

TEST(ReportCollector, GivesAnOutputWithoutPcrsNoIntervals) {
  for (const int pcrPid : {512 /* none come */, 65535 /* not known */, kNullPid /* no clock */}) {
    RecordingDaemon daemon;
    daemon.answer = {{101, test::sampleAnswer().at(1201)}};
    daemon.answer.at(101).pidItems.at(1).inputPid = pcrPid;
    const Report report = collect(test::sample(), daemon).report;
    EXPECT_TRUE(report.services[0].output.value().intervals.empty()) << pcrPid;
  }
}

TEST(ReportCollector, ChecksAStreamWithoutATableThatADaemonCouldBeFed) {
  test::StreamBuilder stream;
  stream.add(0x300);
  stream.add(0x300);
  const TemporaryFile file("ts");
  file.write(stream.packets());
  const Verdict verdict = check(file.path());
  EXPECT_EQ(2U, verdict.packets);
  EXPECT_EQ(12U, verdict.checks.size());
  RecordingDaemon daemon;
  EXPECT_THROW((void)collect(file.path(), daemon), ToolError);
}

TEST_F(ReportOfTheSample, CountsEveryPacketOnce) {
  uint64_t sum = 0;
  for (const auto& [pid, count] : report_.pids) {
    sum += count.packets;
    EXPECT_EQ(0U, count.continuityErrors) << pid;
    EXPECT_EQ(0U, count.crcErrors) << pid;
  }
  EXPECT_EQ(report_.packets, sum);
}

TEST_F(ReportOfTheSample, HasTheServicesWithTheirStreams) {
  ASSERT_EQ(4U, report_.services.size());
  const Service& uno = report_.services[0];
  EXPECT_EQ("Canal Uno", uno.name);
  EXPECT_EQ("Sample Media", uno.provider);
  EXPECT_EQ("AVC SD digital television", uno.typeName);
  EXPECT_THAT(pidsOf(uno.streams), ElementsAre(0x100, 0x101, 0x102, 0x103, 0x104, 0x1F0));
  EXPECT_TRUE(streamOn(uno.streams, 0x101).hasPcr);
  EXPECT_EQ(StreamKind::kVideo, streamOn(uno.streams, 0x101).kind);
  EXPECT_THAT(streamOn(uno.streams, 0x102).languages, ElementsAre("spa"));
  EXPECT_EQ("ECM of 0x0071", streamOn(uno.streams, 0x1F0).description);
  EXPECT_EQ("Télé Deux", report_.services[1].name);
}

TEST_F(ReportOfTheSample, HasThePidsOfNoServiceByKind) {
  EXPECT_THAT(pidsOf(report_.others),
              ElementsAre(0x00, 0x01, 0x10, 0x11, 0x12, 0x14, 0x701, 0x702, 0x1FFF));
  EXPECT_EQ(StreamKind::kTables, streamOn(report_.others, 0x12).kind);
  EXPECT_EQ("EMM of 0x0072", streamOn(report_.others, 0x702).description);
  EXPECT_EQ(StreamKind::kStuffing, streamOn(report_.others, 0x1FFF).kind);
}

TEST_F(ReportOfTheSample, HasTheEventsOfBothKindsOfEitOnce) {
  const std::vector<Event>& events = report_.services[0].events;
  ASSERT_EQ(14U, events.size());
  EXPECT_EQ("2024-05-17 12:00:00", dateAndTime(events[0].start));
  EXPECT_EQ(1, std::count_if(events.begin(), events.end(),
                             [](const Event& event) { return event.isPresent; }));
  EXPECT_EQ(1, std::count_if(events.begin(), events.end(),
                             [](const Event& event) { return event.isFollowing; }));
}

TEST_F(ReportOfTheSample, AsksForEveryServiceUnderItsOwnNameAndIds) {
  ASSERT_EQ(4U, daemon_.requests.size());
  EXPECT_EQ(102, daemon_.requests[1].inputSID);
  const OutputServiceDescription& output = daemon_.requests[1].outputs.at(102);
  EXPECT_EQ("Télé Deux", output.serviceName);
  EXPECT_EQ(102, output.outputSID);
  EXPECT_EQ(1101, output.transportStreamId);
  EXPECT_EQ(0xFF01, output.originalNetworkId);
}

TEST_F(ReportOfTheSample, TakesTheOutputFromTheAnswer) {
  const Output& output = report_.services[0].output.value();
  EXPECT_EQ("Uno", output.name);
  ASSERT_EQ(5U, output.streams.size());
  EXPECT_EQ(0, output.streams[0].outputPid);
  EXPECT_TRUE(output.streams[1].made) << "the SDT";
  EXPECT_EQ(501, output.streams[2].outputPid);
  EXPECT_TRUE(output.streams[2].made) << "the PMT";
  EXPECT_EQ(512, output.streams[3].inputPid);
  EXPECT_THAT(output.streams[3].attributes, ElementsAre("PCR", "ES"));
  EXPECT_EQ("MPEG-2 video", output.streams[3].description);
  EXPECT_FALSE(output.streams[4].inputPid.has_value());
  EXPECT_THAT(output.streams[4].languages, ElementsAre("eng"));
  ASSERT_EQ(3U, output.tables.size());
  const DVBOutputTables made = test::sampleAnswer().at(1201).outputTables.dvbTables;
  EXPECT_TRUE(SiTable(made.pat) == output.tables[0].table);
  EXPECT_TRUE(SiTable(made.sdt) == output.tables[1].table);
  EXPECT_TRUE(SiTable(made.pmt) == output.tables[2].table);
  EXPECT_EQ(501, output.tables[2].pid);
}

TEST_F(ReportOfTheSample, SaysWhereTheDaemonGivesNoOutput) {
  EXPECT_FALSE(report_.services[2].output.has_value());
  EXPECT_EQ(3U, collected_.refused);
  EXPECT_THAT(report_.faults, testing::Contains(HasSubstr("service 103: there is no output")));
  EXPECT_THAT(report_.faults, testing::Contains(HasSubstr("service 101: output PID 503")))
      << "what cannot be carried";
}

/** The report of a file of these packets. */
Report reportOf(const test::StreamBuilder& stream) {
  const TemporaryFile file("ts");
  file.write(stream.packets());
  RecordingDaemon daemon;
  return collect(file.path(), daemon).report;
}

TEST(ReportCollector, KnowsNoTimeWithoutPcrs) {
  test::StreamBuilder stream;
  stream.add(0x00, test::makePat(1, 1, {}));
  const Report report = reportOf(stream);
  EXPECT_FALSE(report.seconds.has_value());
  EXPECT_FALSE(report.bitRate(1).has_value());
  EXPECT_EQ(1.0, report.share(1));
  EXPECT_TRUE(report.services.empty());
  EXPECT_FALSE(report.firstClock.has_value());
}

TEST(ReportCollector, ShowsAServiceWhosePmtNeverComes) {
  test::StreamBuilder stream;
  stream.add(0x00, test::makePat(1, 1, {{101, 0x100}}));
  stream.add(0x100);
  const Report report = reportOf(stream);
  ASSERT_EQ(1U, report.services.size());
  EXPECT_FALSE(report.services[0].hasPmt);
  EXPECT_FALSE(report.services[0].output.has_value());
  EXPECT_THAT(pidsOf(report.services[0].streams), ElementsAre(0x100));
}

TEST(ReportCollector, GivesPcrsOnAPidOfTheirOwnAPlace) {
  test::StreamBuilder stream;
  stream.add(0x00, test::makePat(1, 1, {{101, 0x100}}));
  stream.add(0x100, test::makePmt(101, 1, 0x1FE, {{2, 0x101, {}}, {2, 0x101, {}}}));
  stream.add(0x1FE, 0);
  stream.add(0x300);
  stream.add(0x1FE, kSystemClock / 10);
  const Report report = reportOf(stream);
  EXPECT_THAT(pidsOf(report.services.at(0).streams), ElementsAre(0x100, 0x101, 0x1FE));
  EXPECT_TRUE(report.services[0].streams[2].hasPcr);
  EXPECT_EQ(StreamKind::kUnreferenced, streamOn(report.others, 0x300).kind);
  EXPECT_NEAR(0.2, report.seconds.value(), 0.001) << "five packets, two in a tenth of a second";
}

TEST(ReportCollector, TellsTheNetworkPidOfThePatFromUnreferencedOnes) {
  test::StreamBuilder stream;
  stream.add(0x00, test::makePat(1, 1, {{0, 0x50}}));
  stream.add(0x50);
  stream.add(0x51);
  const Report report = reportOf(stream);
  EXPECT_EQ("NIT", streamOn(report.others, 0x50).description);
  EXPECT_EQ(StreamKind::kTables, streamOn(report.others, 0x50).kind);
  EXPECT_EQ("unreferenced", streamOn(report.others, 0x51).description);
}

TEST(ReportCollector, CountsFaultsByPid) {
  test::StreamBuilder stream;
  stream.add(0x00, test::makePat(1, 1, {}));
  test::Bytes broken = test::makeSdt(1, 5, 101, "Two");
  broken[20] ^= 1;
  stream.add(0x11, broken);
  const Report report = reportOf(stream);
  EXPECT_EQ(1U, report.countOf(0x11).crcErrors);
  EXPECT_EQ(0U, report.countOf(0x00).crcErrors);
  EXPECT_EQ(1U, report.countOf(0x11).sections);
  EXPECT_THAT(report.faultLines(), ElementsAre("SDT, BAT on PID 17: 1 section with a wrong CRC"));
}

TEST(ReportCollector, ReadsAFrenchMultiplexOfSiAlone) {
  const std::string path = test::capture("french-dtt-si-only.ts");
  SKIP_WITHOUT_CAPTURE(path);
  RecordingDaemon daemon;
  const Report report = collect(path, daemon).report;
  EXPECT_TRUE(daemon.requests.empty()) << "no service has a PMT";
  ASSERT_EQ(5U, report.services.size());
  EXPECT_EQ("M6", report.services[0].name);
  EXPECT_EQ(59U, report.services[0].events.size());
  EXPECT_FALSE(report.seconds.has_value());
  EXPECT_EQ("2019-01-22 12:51:09", dateAndTime(report.firstClock.value()));
  EXPECT_EQ(1U, report.countOf(0x12).crcErrors);
  EXPECT_EQ(27U, report.countOf(0x12).otherSections);
}

TEST(ReportCollector, ReadsAnItalianMultiplexWithSharedPids) {
  const std::string path = test::capture("italian-dtt-mpts.ts");
  SKIP_WITHOUT_CAPTURE(path);
  RecordingDaemon daemon;
  const Report report = collect(path, daemon).report;
  EXPECT_EQ(8U, daemon.requests.size());
  EXPECT_NEAR(22.39e6, report.bitRate(report.packets).value(), 0.05e6);
  EXPECT_THAT(pidsOf(report.services.at(0).streams), testing::Contains(3001));
  EXPECT_THAT(pidsOf(report.services.at(1).streams), testing::Contains(3001));
  EXPECT_THAT(streamOn(report.services[0].streams, 576).languages, ElementsAre("ita", "eng"));
  EXPECT_EQ(StreamKind::kUnreferenced, streamOn(report.others, 579).kind);
}

TEST(ReportCollector, FailsAsFeedDoes) {
  RecordingDaemon daemon;
  EXPECT_THROW((void)collect("/no/such/file.ts", daemon), ToolError);
  const TemporaryFile nothing("ts");
  nothing.write(std::string(1000, 'x'));
  EXPECT_THROW((void)collect(nothing.path(), daemon), ToolError);
  EXPECT_THROW((void)check(nothing.path()), ToolError);
}

// Any file must become a page or an error; the sanitizers watch.
TEST(ReportCollector, SurvivesDamagedStreams) {
  const std::string whole = test::contentOf(test::sample());
  std::mt19937 random(3);
  for (int round = 0; round < 5; ++round) {
    std::string bytes = whole.substr(random() % 200'000, 300'000);
    for (int i = 0; i < 600; ++i) {
      bytes[random() % bytes.size()] = static_cast<char>(random());
    }
    const TemporaryFile file("damaged");
    file.write(bytes);
    RecordingDaemon daemon;
    const Report report = collect(file.path(), daemon).report;
    EXPECT_GT(report.packets, 1000U);
    EXPECT_THAT(reportPage(report), HasSubstr("to look at"));
    EXPECT_FALSE(reportJson(report).empty());
  }
}

}  // namespace
}  // namespace tevra::tools::report
