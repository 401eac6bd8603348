#include "tools/extract/output_warnings.h"

#include <gmock/gmock.h>

#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/table_makers.h"
#include "tools/outputs/pid_attributes.h"

namespace tevra::tools {
namespace {

using test::pidItem;
using test::streamRecord;
using testing::ElementsAre;
using testing::IsEmpty;

/** An output with video and audio that has all it needs. */
SptsFile goodFile() {
  SptsFile file;
  file.configuration = test::sampleAnswer().at(1201);
  file.configuration.pidItems[2].inputPid = 513;
  file.input = test::pmtRecord(
      {streamRecord(0x02, 512), streamRecord(0x04, 513, {test::languageDescriptor("eng")})});
  file.streamPackets = 30;
  file.pidPackets = {{0, 1}, {501, 1}, {502, 20}, {503, 10}};
  file.pcrs = 5;
  return file;
}

PMT& pmtOf(SptsFile& file) {
  return file.configuration.outputTables.dvbTables.pmt;
}

TEST(OutputWarnings, AreNoneOfAnOutputThatHasAll) {
  EXPECT_THAT(outputWarnings(goodFile()), IsEmpty());
}

TEST(OutputWarnings, TellOfAPmtWithoutAPid) {
  for (const int pid : {0, 8191, 65535}) {
    SptsFile file = goodFile();
    file.configuration.outputTables.dvbTables.pat.programs.at(0).pid = pid;
    EXPECT_THAT(outputWarnings(file),
                ElementsAre("the output's PMT has no usable PID (" + std::to_string(pid) +
                            "): no receiver finds its streams"));
  }
  SptsFile file = goodFile();
  file.configuration.outputTables.dvbTables.pat.programs.clear();
  EXPECT_EQ(1U, outputWarnings(file).size());
}

TEST(OutputWarnings, TellOfAnOutputWithoutAClock) {
  const std::string end = ": a receiver has no clock to play by";
  for (const int pid : {0, 8191, 65535}) {
    SptsFile file = goodFile();
    pmtOf(file).pcrPid = pid;
    EXPECT_THAT(outputWarnings(file), ElementsAre("the output has no usable PCR PID (" +
                                                  std::to_string(pid) + ")" + end));
  }
  SptsFile unlisted = goodFile();
  unlisted.configuration.pidItems[1].attributes = kPidEs;
  EXPECT_THAT(outputWarnings(unlisted),
              ElementsAre("the output has no usable PCR PID (502)" + end));
  SptsFile clockless = goodFile();
  clockless.configuration.pidItems[1].attributes = kPidEs;
  clockless.configuration.pidItems.push_back(pidItem(8191, 504, kPidPcr));
  EXPECT_THAT(outputWarnings(clockless), ElementsAre("the service has no PCR PID (8191)" + end));
  SptsFile silent = goodFile();
  silent.pcrs = 0;
  EXPECT_THAT(outputWarnings(silent), ElementsAre("there is no PCR on output PID 502" + end));
}

TEST(OutputWarnings, TellOfStreamsWithoutAPacket) {
  SptsFile file = goodFile();
  file.pidPackets.erase(503);
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("the input has no packet of output PID 503 (MPEG-2 audio)"));
  file.configuration.pidItems.push_back(pidItem(600, 504, kPidEcm));
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("the input has no packet of output PIDs 503 (MPEG-2 audio), 504 (ECM)"));
  file.configuration.pidItems.back().inputPid = 65535;
  EXPECT_EQ(1U, outputWarnings(file).size());
}

TEST(OutputWarnings, TellOfGapsInTheStreamsOfEachPid) {
  SptsFile file = goodFile();
  file.pidGaps = {{502, 14}, {503, 1}, {504, 2}};
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("14 gaps in the packets of output PID 502 (MPEG-2 video)",
                          "1 gap in the packets of output PID 503 (MPEG-2 audio)",
                          "2 gaps in the packets of output PID 504"))
      << "504 is of an answer before the last";
}

TEST(OutputWarnings, LeaveTheStreamsToTheErrorWhereThereIsNone) {
  SptsFile file = goodFile();
  file.streamPackets = 0;
  file.pcrs = 0;
  file.pidPackets = {{0, 1}, {501, 1}};
  EXPECT_THAT(outputWarnings(file), IsEmpty());
}

TEST(OutputWarnings, TellOfScrambledPacketsThatNoCaDescriptorAnnounces) {
  SptsFile file = goodFile();
  file.pidScrambled = {{502, 19}, {503, 1}};
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("20 packets on output PIDs 502, 503 are scrambled, but the output is "
                          "announced as clear"));
  pmtOf(file).esList.at(0).descriptors = {test::caDescriptor(0x0500, 600)};
  EXPECT_THAT(outputWarnings(file), ElementsAre("1 packet on output PID 503 is scrambled, but the "
                                                "output is announced as clear"));
  pmtOf(file).descriptors = {test::caDescriptor(0x0500, 601)};
  EXPECT_THAT(outputWarnings(file), IsEmpty());
}

TEST(OutputWarnings, TellOfStreamsWhoseTypeIsNotCarried) {
  SptsFile file = goodFile();
  file.input.esList.push_back(streamRecord(0x86, 600));
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("left out for a type that is not carried: input PID 600 (SCTE 35 "
                          "splice information)"));
  file.input.esList.push_back(streamRecord(0x0B, 601));
  EXPECT_EQ(1U, outputWarnings(file).size());
}

TEST(OutputWarnings, TellWhatTheFilterByLanguageDidNotDo) {
  SptsFile file = goodFile();
  file.output.audio = {"fra"};
  EXPECT_THAT(outputWarnings(file),
              ElementsAre("there is no audio in fra/fre: the input's is in eng"));
}

}  // namespace
}  // namespace tevra::tools
