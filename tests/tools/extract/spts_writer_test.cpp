#include "tools/extract/spts_writer.h"

#include <algorithm>
#include <map>

#include <gtest/gtest.h>

#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::Bytes;
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
  explicit SptsWriterTest(const SPTSConfiguration& configuration = makeConfiguration())
      : writer_(configuration, [this](const TsPacket& packet) { output_.push_back(packet); }) {}

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

void expectCountersRunOn(const std::vector<TsPacket>& packets) {
  for (size_t i = 1; i < packets.size(); ++i) {
    const int step = packets[i].hasPayload() ? 1 : 0;
    ASSERT_EQ((packets[i - 1].continuityCounter() + step) % 16, packets[i].continuityCounter())
        << "packet " << i << " of PID " << packets[i].pid();
  }
}

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
