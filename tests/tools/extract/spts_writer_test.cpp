#include "tools/extract/spts_writer.h"

#include <algorithm>
#include <map>
#include <random>

#include <gmock/gmock.h>

#include "tests/tools/support/continuity_check.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/table_intervals.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::Bytes;
using test::expectCountersRunOn;
using test::packetStrings;
using test::PacketWriter;
using test::pidItem;

constexpr int kInputVideo = 0x200;
constexpr int kInputAudio = 0x201;
constexpr int kInputPmt = 0x100;
constexpr int kPmt = 501;
constexpr int kVideo = 502;
constexpr int kAudio = 503;
constexpr int64_t kMillisecond = kSystemClock / 1000;

using Gaps = std::map<int, uint64_t>;  // by output PID

/** A video with PCR and an audio stream; the PMT takes three packets. */
SPTSConfiguration makeConfiguration() {
  SPTSConfiguration configuration;
  configuration.pidItems = {pidItem(kInputPmt, kPmt, kPidPmt),
                            pidItem(kInputVideo, kVideo, kPidPcr | kPidEs),
                            pidItem(kInputAudio, kAudio, kPidEs)};
  OutputTables& tables = configuration.outputTables;
  tables.patPackets = packetStrings(kPatPid, test::makePat(1, 1, {{1201, kPmt}}));
  tables.sdtPackets = packetStrings(kSdtPid, test::makeSdt(1, 1, 1201, "Uno"));
  const Bytes large = test::descriptor(0x52, Bytes(200, 1));
  tables.pmtPackets =
      packetStrings(kPmt, test::makePmt(1201, 1, kVideo, {{2, kVideo, large}, {4, kAudio, large}}));
  return configuration;
}

class SptsWriterTest : public testing::Test {
 protected:
  explicit SptsWriterTest(const SPTSConfiguration& configuration = makeConfiguration(),
                          SptsWriter::Timing timing = SptsWriter::Timing::kExact)
      : writer_(
            configuration, [this](const TsPacket& packet) { output_.push_back(packet); }, timing) {}

  /**
   * `milliseconds` of input: every 10 ms a video packet with a PCR, eight without and an audio
   * packet.
   */
  void pushInput(int milliseconds) {
    for (int i = 0; i < milliseconds / 10; ++i) {
      writer_.push(input_.stream(kInputVideo, 0x10, pcr_));
      for (int j = 0; j < 8; ++j) {
        writer_.push(input_.stream(kInputVideo, 0x11));
      }
      writer_.push(input_.stream(kInputAudio, 0x22));
      pcr_ += 10 * kMillisecond;
    }
  }

  std::vector<TsPacket> outputOf(int pid) const {
    std::vector<TsPacket> packets;
    std::copy_if(output_.begin(), output_.end(), std::back_inserter(packets),
                 [pid](const TsPacket& packet) { return packet.pid() == pid; });
    return packets;
  }

  /** The stream time of each section start on the PID, by the last PCR before it. */
  std::vector<int64_t> startTimes(int pid) const {
    std::vector<int64_t> times;
    int64_t now = 0;
    for (const TsPacket& packet : output_) {
      if (packet.pid() == kVideo && packet.pcr()) {
        now = *packet.pcr();
      } else if (packet.pid() == pid && packet.unitStart()) {
        times.push_back(now);
      }
    }
    return times;
  }

  static int64_t longestInterval(const std::vector<int64_t>& times) {
    int64_t longest = 0;
    for (size_t i = 1; i < times.size(); ++i) {
      longest = std::max(longest, times[i] - times[i - 1]);
    }
    return longest;
  }

  PacketWriter input_;
  int64_t pcr_ = 0;
  std::vector<TsPacket> output_;
  SptsWriter writer_;
};

TEST_F(SptsWriterTest, TablesComeBeforeAnyStream) {
  pushInput(50);
  writer_.finish();
  std::vector<int> pids;
  for (size_t i = 0; i < 6; ++i) {
    pids.push_back(output_.at(i).pid());
  }
  EXPECT_EQ((std::vector<int>{kPatPid, kPmt, kPmt, kPmt, kSdtPid, kVideo}), pids);
}

TEST_F(SptsWriterTest, StreamsGoOnUnderTheirOutputPidsOtherwiseUntouched) {
  input_.lose(kInputVideo, 5);  // the first counter is not 0
  pushInput(100);
  writer_.finish();
  const std::vector<TsPacket> video = outputOf(kVideo);
  ASSERT_EQ(90U, video.size());
  EXPECT_EQ(5, video[0].continuityCounter());
  expectCountersRunOn(video);
  EXPECT_EQ(0x11, video[1].data()[50]);
  EXPECT_EQ(10U, outputOf(kAudio).size());
  EXPECT_EQ(100U, writer_.streamPackets());
  EXPECT_EQ(output_.size(), writer_.streamPackets() + writer_.tablePackets());
}

TEST_F(SptsWriterTest, DropsTheInputsTablesAndEveryOtherPid) {
  writer_.push(input_.section(kPatPid, test::makePat(99, 9, {}))[0]);
  writer_.push(input_.section(kSdtPid, test::makeSdt(99, 9, 1, "Old"))[0]);
  writer_.push(input_.section(kInputPmt, test::makePmt(99, 9, 1, {}))[0]);
  for (const int pid : {kCatPid, kNitPid, kEitPid, kTotPid, 0x202, kNullPid, kPmt, kVideo}) {
    writer_.push(input_.stream(pid, 0x33));
  }
  pushInput(30);
  writer_.finish();
  for (const TsPacket& packet : output_) {
    EXPECT_NE(0x33, packet.data()[100]) << packet.pid();
  }
  const auto answer = makeConfiguration().outputTables;
  EXPECT_EQ(answer.patPackets[0].substr(4),
            std::string(reinterpret_cast<const char*>(outputOf(kPatPid)[0].data()), 188).substr(4));
  EXPECT_EQ(1U, outputOf(kPatPid).size());
  EXPECT_EQ(1U, outputOf(kSdtPid).size());
}

TEST_F(SptsWriterTest, PatAndPmtComeAtLeastEvery100Milliseconds) {
  pushInput(5000);
  writer_.finish();
  for (const int pid : {kPatPid, kPmt}) {
    const std::vector<int64_t> times = startTimes(pid);
    EXPECT_GE(times.size(), 50U) << pid;
    EXPECT_LE(longestInterval(times), 100 * kMillisecond) << pid;
  }
}

TEST_F(SptsWriterTest, SdtComesEverySecond) {
  pushInput(5000);
  writer_.finish();
  const std::vector<int64_t> times = startTimes(kSdtPid);
  EXPECT_GE(times.size(), 5U);
  EXPECT_LE(times.size(), 6U);
  EXPECT_LE(longestInterval(times), kSystemClock);
}

TEST_F(SptsWriterTest, TablesComeOftenEnoughWherePcrsAreFarApart) {
  for (int second = 0; second < 5; ++second) {
    writer_.push(input_.stream(kInputVideo, 0, second * kSystemClock));
    for (int i = 1; i < 1000; ++i) {  // a packet is a millisecond
      writer_.push(input_.stream(kInputVideo, 0));
    }
  }
  writer_.finish();
  int64_t sinceLast = 0;
  int64_t longest = 0;
  for (const TsPacket& packet : output_) {
    sinceLast = packet.pid() == kPatPid ? 0 : sinceLast + (packet.pid() == kVideo ? 1 : 0);
    longest = std::max(longest, sinceLast);
  }
  EXPECT_LE(longest, 100);
}

TEST_F(SptsWriterTest, ContinuityCountersOfTheTablesRunOn) {
  pushInput(3000);
  writer_.finish();
  for (const int pid : {kPatPid, kSdtPid, kPmt}) {
    const std::vector<TsPacket> packets = outputOf(pid);
    ASSERT_GT(packets.size(), 2U);
    EXPECT_EQ(0, packets[0].continuityCounter());
    expectCountersRunOn(packets);
  }
}

TEST_F(SptsWriterTest, AllPacketsOfATableStandTogether) {
  pushInput(500);
  writer_.finish();
  for (size_t i = 0; i < output_.size(); ++i) {
    if (output_[i].pid() == kPmt && output_[i].unitStart()) {
      EXPECT_EQ(kPatPid, output_[i - 1].pid());
      EXPECT_EQ(kPmt, output_.at(i + 1).pid());
      EXPECT_EQ(kPmt, output_.at(i + 2).pid());
    }
  }
}

TEST_F(SptsWriterTest, CountsGapsInTheInputsPacketsByOutputPid) {
  pushInput(30);
  EXPECT_EQ(Gaps{}, writer_.gaps());
  input_.lose(kInputVideo, 1);
  pushInput(10);
  input_.lose(kInputVideo, 1);
  input_.lose(kInputAudio, 1);
  pushInput(10);
  writer_.finish();
  EXPECT_EQ((Gaps{{kVideo, 2}, {kAudio, 1}}), writer_.gaps());
}

TEST_F(SptsWriterTest, TellsHowLongTheInputIs) {
  pushInput(2000);
  writer_.finish();
  EXPECT_NEAR(2000, static_cast<double>(writer_.duration().value()) / kMillisecond, 2);
}

SPTSConfiguration sharedPidConfiguration() {
  SPTSConfiguration configuration = makeConfiguration();
  configuration.pidItems = {pidItem(kInputPmt, kPmt, kPidPmt | kPidPcr),
                            pidItem(kInputVideo, kVideo, kPidEs),
                            pidItem(kInputAudio, kVideo, kPidEs)};
  return configuration;
}

class SptsWriterSharedPidTest : public SptsWriterTest {
 protected:
  SptsWriterSharedPidTest() : SptsWriterTest(sharedPidConfiguration()) {}
};

TEST_F(SptsWriterSharedPidTest, CarriesThePcrsOfThePmtsPidWithoutItsPayload) {
  for (int i = 0; i < 40; ++i) {
    writer_.push(input_.stream(kInputPmt, 0x44, i * 20 * kMillisecond));
    writer_.push(input_.stream(kInputPmt, 0x45));
  }
  writer_.finish();
  const std::vector<TsPacket> packets = outputOf(kPmt);
  expectCountersRunOn(packets);
  int64_t pcrs = 0;
  for (const TsPacket& packet : packets) {
    EXPECT_EQ(packet.pcr().has_value(), !packet.hasPayload());
    EXPECT_NE(0x45, packet.data()[100]);
    pcrs += packet.pcr() ? 1 : 0;
  }
  EXPECT_EQ(40, pcrs);
}

TEST_F(SptsWriterSharedPidTest, NumbersPacketsAnewWhereInputPidsShareAnOutputPid) {
  input_.lose(kInputAudio, 9);
  pushInput(300);
  TsPacket adaptationOnly = input_.stream(kInputVideo, 0, pcr_).withoutPayload();
  writer_.push(adaptationOnly);
  pushInput(300);
  writer_.finish();
  const std::vector<TsPacket> packets = outputOf(kVideo);
  EXPECT_EQ(601U, packets.size());
  expectCountersRunOn(packets);
}

TEST_F(SptsWriterSharedPidTest, CountsTheGapsOfTheStreamsThatShareAnOutputPidTogether) {
  pushInput(20);
  input_.lose(kInputVideo, 1);
  input_.lose(kInputAudio, 1);
  writer_.push(input_.stream(kInputPmt, 0, pcr_));
  input_.lose(kInputPmt, 1);
  writer_.push(input_.stream(kInputPmt, 0, pcr_));
  pushInput(20);
  writer_.finish();
  EXPECT_EQ((Gaps{{kVideo, 2}}), writer_.gaps()) << "the PMT's PID carries none";
}

class SptsWriterAtOnceTest : public SptsWriterTest {
 protected:
  SptsWriterAtOnceTest() : SptsWriterTest(makeConfiguration(), SptsWriter::Timing::kAtOnce) {}

  /**
   * Both streams for so many PCRs, at most 40 ms apart, with anything from no packet to fifty in
   * between.
   */
  void pushIrregularInput(int pcrs) {
    for (int i = 0; i < pcrs; ++i) {
      writer_.push(input_.stream(kInputVideo, 0x10, pcr_));
      for (auto j = random_() % 51; j > 0; --j) {
        writer_.push(input_.stream(random_() % 2 == 0 ? kInputVideo : kNullPid, 0x11));
      }
      pcr_ += static_cast<int64_t>(1 + random_() % 40) * kMillisecond;
    }
  }

  /** By the PCR before each, and with the packets between two PCRs spread evenly. */
  void expectTablesOften() const {
    using test::TableIntervals;
    for (const int pid : {kPatPid, kPmt}) {
      EXPECT_LE(longestInterval(startTimes(pid)), 100 * kMillisecond) << pid;
    }
    EXPECT_LE(longestInterval(startTimes(kSdtPid)), kSystemClock);
    test::Faults faults;
    TableIntervals intervals(faults);
    const std::map<int, TableIntervals::Table> tables = {{kPatPid, TableIntervals::kPat},
                                                         {kPmt, TableIntervals::kPmt},
                                                         {kSdtPid, TableIntervals::kSdt}};
    for (size_t i = 0; i < output_.size(); ++i) {
      const TsPacket& packet = output_[i];
      if (packet.pid() == kVideo && packet.pcr()) {
        intervals.pcr(*packet.pcr(), i);
      } else if (tables.count(packet.pid()) != 0 && packet.unitStart()) {
        intervals.table(tables.at(packet.pid()), i);
      }
    }
    intervals.finish();
    EXPECT_THAT(faults.lines(), testing::IsEmpty());
  }

  std::mt19937 random_;
};

TEST_F(SptsWriterAtOnceTest, HoldsNothingBack) {
  writer_.push(input_.stream(kInputAudio, 0x22));
  EXPECT_EQ(6U, output_.size()) << "the tables and the packet";
  pushInput(100);
  EXPECT_EQ(101U, writer_.streamPackets());
  EXPECT_EQ(kAudio, output_.back().pid());
  const size_t size = output_.size();
  writer_.finish();
  EXPECT_EQ(size, output_.size());
}

TEST_F(SptsWriterAtOnceTest, WritesWhatTheOtherTimingDoesWherePcrsAreRegular) {
  std::vector<TsPacket> exact;
  SptsWriter other(makeConfiguration(), [&](const TsPacket& packet) { exact.push_back(packet); });
  test::PacketWriter input;
  for (int i = 0; i < 500; ++i) {
    const TsPacket packet = input.stream(kInputVideo, 0, i * 20 * kMillisecond);
    const TsPacket audio = input.stream(kInputAudio, 0);
    for (SptsWriter* writer : {&other, &writer_}) {
      writer->push(packet);
      writer->push(audio);
    }
  }
  other.finish();
  EXPECT_NEAR(static_cast<double>(exact.size()), static_cast<double>(output_.size()), 8);
  EXPECT_NEAR(static_cast<double>(other.duration().value()),
              static_cast<double>(writer_.duration().value()), 10.0 * kMillisecond);
  expectTablesOften();
}

TEST_F(SptsWriterAtOnceTest, RepeatsTablesInTimeWherePcrsAreIrregular) {
  pushIrregularInput(3000);
  expectTablesOften();
  EXPECT_LE(startTimes(kPatPid).size(), 2 * static_cast<size_t>(pcr_ / (60 * kMillisecond)));
}

TEST_F(SptsWriterAtOnceTest, RepeatsTablesWithoutPcrs) {
  for (int i = 0; i < 10'000; ++i) {
    writer_.push(input_.stream(kInputVideo, 0));
  }
  EXPECT_GT(outputOf(kPatPid).size(), 100U);
  EXPECT_EQ(std::nullopt, writer_.duration());
}

/** Another version of makeConfiguration, with a larger PAT, on other PIDs where they are given. */
SPTSConfiguration nextConfiguration(int pmtPid = kPmt, const std::vector<PIDItem>& items = {}) {
  SPTSConfiguration configuration = makeConfiguration();
  OutputTables& tables = configuration.outputTables;
  tables.patPackets = packetStrings(kPatPid, test::makePat(1, 2, test::Programs(60, {1, pmtPid})));
  tables.pmtPackets = packetStrings(pmtPid, test::makePmt(1201, 2, kVideo, {{2, kVideo, {}}}));
  if (!items.empty()) {
    configuration.pidItems = items;
  }
  return configuration;
}

TEST_F(SptsWriterAtOnceTest, SendsTheTablesOfANewAnswerBeforeTheNextPacket) {
  pushInput(10);
  const size_t before = output_.size();
  writer_.configure(nextConfiguration());
  EXPECT_EQ(before, output_.size());
  pushInput(10);
  std::vector<int> pids;
  for (size_t i = before; i < before + 5; ++i) {
    pids.push_back(output_.at(i).pid());
  }
  EXPECT_EQ((std::vector<int>{kPatPid, kPatPid, kPmt, kSdtPid, kVideo}), pids);
}

TEST_F(SptsWriterAtOnceTest, LetsCountersRunOnOverANewAnswer) {
  constexpr int kOtherPmt = 511;
  pushInput(250);
  writer_.configure(nextConfiguration());
  pushInput(250);
  const PIDItem pmt = pidItem(kInputPmt, kOtherPmt, kPidPmt);
  const std::vector<std::vector<PIDItem>> answers = {
      {pmt, pidItem(kInputVideo, kVideo, kPidPcr | kPidEs),
       pidItem(kInputAudio, kVideo, kPidEs)},                 // now they share a PID
      {pmt, pidItem(kInputVideo, kVideo, kPidPcr | kPidEs)},  // and do not any more
      {pmt, pidItem(kInputAudio, kVideo, kPidEs)},            // another stream
      {pidItem(kInputVideo, kVideo, kPidPcr | kPidEs)},       // and back
      {pmt, pidItem(kInputAudio, kOtherPmt + 1, kPidEs)},     // away
      {pmt, pidItem(kInputVideo, kVideo, kPidPcr | kPidEs)},  // and back
  };
  for (const std::vector<PIDItem>& items : answers) {
    writer_.configure(nextConfiguration(kOtherPmt, items));
    pushInput(130);
  }
  writer_.configure(makeConfiguration());
  pushInput(250);
  for (const int pid : {kPatPid, kSdtPid, kPmt, kOtherPmt, kVideo}) {
    expectCountersRunOn(outputOf(pid));
  }
}

TEST_F(SptsWriterAtOnceTest, LeavesTheInputsLossesInAStreamOverANewAnswer) {
  input_.lose(kInputVideo, 3);
  pushInput(10);
  writer_.configure(nextConfiguration());
  input_.lose(kInputVideo, 2);
  pushInput(10);
  const std::vector<TsPacket> video = outputOf(kVideo);
  EXPECT_EQ(3, video[0].continuityCounter());
  EXPECT_EQ(3 + 9 + 2, video[9].continuityCounter());
}

TEST_F(SptsWriterAtOnceTest, TakesWhatItIsNotGivenOrDoesNotCarryForNoGap) {
  pushInput(10);
  input_.lose(kInputVideo, 25);
  writer_.skip();
  pushInput(10);
  writer_.configure(nextConfiguration(kPmt, {pidItem(kInputAudio, kAudio, kPidEs)}));
  pushInput(10);  // without the video
  writer_.configure(makeConfiguration());
  pushInput(10);
  EXPECT_EQ(Gaps{}, writer_.gaps());
  input_.lose(kInputVideo, 1);
  writer_.configure(nextConfiguration());
  pushInput(10);
  EXPECT_EQ((Gaps{{kVideo, 1}}), writer_.gaps()) << "a stream goes on over a new answer";
}

TEST_F(SptsWriterAtOnceTest, GoesOnInTimeByANewPcrPid) {
  pushInput(1000);
  const int64_t before = writer_.duration().value();
  writer_.configure(nextConfiguration(
      kPmt, {pidItem(kInputPmt, kPmt, kPidPmt), pidItem(kInputVideo, kVideo, kPidEs),
             pidItem(kInputAudio, kAudio, kPidPcr | kPidEs)}));
  const size_t tables = outputOf(kPatPid).size();
  for (int i = 0; i < 25; ++i) {
    writer_.push(input_.stream(kInputAudio, 0, 77 * kSystemClock + i * 40 * kMillisecond));
    writer_.push(input_.stream(kInputVideo, 0));
  }
  EXPECT_NEAR(static_cast<double>(before + 980 * kMillisecond),
              static_cast<double>(writer_.duration().value()), 2.0 * kMillisecond);
  EXPECT_EQ(tables + 2 * 25, outputOf(kPatPid).size()) << "before every PCR, two packets each";
}

TEST_F(SptsWriterAtOnceTest, GoesOnAsBeforeWhereANewAnswerCannotBeUsed) {
  pushInput(510);
  SPTSConfiguration bad = nextConfiguration(511, {pidItem(kInputAudio, 77, kPidPcr | kPidEs)});
  bad.outputTables.pmtPackets = {std::string(188, 'H')};
  EXPECT_THROW(writer_.configure(bad), ToolError);
  const size_t before = outputOf(kPatPid).size();
  pushInput(490);
  EXPECT_EQ(before + 9, outputOf(kPatPid).size()) << "none comes at once";
  EXPECT_EQ(100U, outputOf(kAudio).size());
  expectCountersRunOn(outputOf(kVideo));
  expectCountersRunOn(outputOf(kPmt));
}

TEST_F(SptsWriterTest, WritesWhatWaitsAsTheFormerAnswerSaysWhenANewOneComes) {
  pushInput(10);
  EXPECT_TRUE(output_.empty());
  writer_.configure(nextConfiguration());
  EXPECT_EQ(10U, writer_.streamPackets());
  EXPECT_EQ(1U, outputOf(kPatPid).size());
  pushInput(1000);
  writer_.finish();
  EXPECT_NEAR(1010, static_cast<double>(writer_.duration().value()) / kMillisecond, 20);
  expectCountersRunOn(outputOf(kPmt));
}

TEST(SptsWriter, RefusesAnAnswerWithoutUsablePackets) {
  const auto ignore = [](const TsPacket&) {};
  EXPECT_THROW(SptsWriter(SPTSConfiguration(), ignore), ToolError);
  for (const auto list :
       {&OutputTables::patPackets, &OutputTables::sdtPackets, &OutputTables::pmtPackets}) {
    SPTSConfiguration configuration = makeConfiguration();
    (configuration.outputTables.*list).clear();
    EXPECT_THROW(SptsWriter(configuration, ignore), ToolError);
    (configuration.outputTables.*list) = {std::string(187, 'G')};
    EXPECT_THROW(SptsWriter(configuration, ignore), ToolError);
    (configuration.outputTables.*list) = {std::string(188, 'H')};
    EXPECT_THROW(SptsWriter(configuration, ignore), ToolError);
  }
}

}  // namespace
}  // namespace tevra::tools
