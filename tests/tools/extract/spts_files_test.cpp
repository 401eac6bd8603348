#include "tools/extract/spts_files.h"

#include <unistd.h>

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

#include "tests/tools/support/continuity_check.h"
#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

using test::sample;
using test::TemporaryFile;

constexpr int kInputVideo = 0x101;
constexpr int kPmt = 501;
constexpr int kVideo = 502;

/** An output with one stream of the sample's first service. */
SptsFile outputFor(const TemporaryFile& file, int inputPid = kInputVideo) {
  SptsFile output;
  output.file = file.path();
  output.configuration = test::sampleAnswer().at(1201);
  output.configuration.pidItems.resize(2);
  output.configuration.pidItems[1].inputPid = inputPid;
  return output;
}

TEST(SptsFiles, WrittenTogetherAreAsIfEachWereWrittenAlone) {
  const TemporaryFile alone("alone");
  const TemporaryFile first("1");
  const TemporaryFile second("2");
  std::vector<SptsFile> together = {outputFor(first), outputFor(second, 0x102)};
  writeSptsFiles(sample(), together);
  for (const auto* file : {&first, &second}) {
    std::vector<SptsFile> single = {outputFor(alone, file == &first ? kInputVideo : 0x102)};
    writeSptsFiles(sample(), single);
    EXPECT_TRUE(alone.read() == file->read()) << file->path();
    test::expectCountersRunOn(file->readPackets());
  }
  EXPECT_FALSE(first.read() == second.read());
}

TEST(SptsFiles, AreAccountedForEach) {
  const TemporaryFile first("1");
  const TemporaryFile second("2");
  std::vector<SptsFile> outputs = {outputFor(first), outputFor(second)};
  outputs[1].configuration.pidItems[1].inputPid = 65535;
  writeSptsFiles(sample(), outputs);
  EXPECT_EQ(1546U, outputs[0].streamPackets);
  const std::vector<TsPacket> written = first.readPackets();
  EXPECT_EQ(written.size(), outputs[0].streamPackets + outputs[0].tablePackets);
  EXPECT_EQ(1546U, outputs[0].pidPackets.at(kVideo));
  EXPECT_EQ(std::count_if(written.begin(), written.end(),
                          [](const TsPacket& packet) { return packet.pid() == kPmt; }),
            static_cast<long>(outputs[0].pidPackets.at(kPmt)));
  EXPECT_EQ(4U, outputs[0].pidPackets.size());
  EXPECT_NEAR(9.41, outputs[0].seconds.value(), 0.01);
  EXPECT_GT(outputs[0].pcrs, 90U);
  EXPECT_TRUE(outputs[0].warnings.empty());
  EXPECT_EQ(0U, outputs[1].streamPackets);
  EXPECT_EQ(1U, outputs[1].warnings.size());
}

TEST(SptsFiles, WithoutPcrsHaveNoDurationAndWarnOfWhatIsScrambled) {
  test::PacketWriter writer;
  std::vector<TsPacket> packets;
  for (int i = 0; i < 3; ++i) {
    packets.push_back(writer.stream(kInputVideo, 1));
    packets.back().data()[3] |= i == 0 ? 0x00 : 0x80;
  }
  const TemporaryFile input("in");
  input.write(packets);
  const TemporaryFile file("out");
  std::vector<SptsFile> outputs = {outputFor(file)};
  writeSptsFiles(input.path(), outputs);
  EXPECT_FALSE(outputs[0].seconds.has_value());
  EXPECT_EQ(0U, outputs[0].pcrs);
  EXPECT_EQ((std::map<int, uint64_t>{{kVideo, 2}}), outputs[0].pidScrambled);
  EXPECT_EQ((std::vector<std::string>{
                "there is no PCR on output PID 502: a receiver has no clock to play by",
                "2 packets on output PID 502 are scrambled, but the output is announced as clear"}),
            outputs[0].warnings);
}

TEST(SptsFiles, TakeOneReadingOfTheInput) {
  test::PacketWriter writer;
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe(ends.data()));
  for (int i = 0; i < 100; ++i) {
    const TsPacket packet = writer.stream(kInputVideo, 1);
    ASSERT_EQ(static_cast<ssize_t>(kTsPacketSize), write(ends[1], packet.data(), kTsPacketSize));
  }
  close(ends[1]);
  const TemporaryFile first("1");
  const TemporaryFile second("2");
  std::vector<SptsFile> outputs = {outputFor(first), outputFor(second)};
  writeSptsFiles("/proc/self/fd/" + std::to_string(ends[0]), outputs);
  close(ends[0]);
  EXPECT_EQ(100U, outputs[0].streamPackets);
  EXPECT_EQ(100U, outputs[1].streamPackets);
}

TEST(SptsFiles, FailWhenOneCannotBeWritten) {
  const TemporaryFile first("1");
  const TemporaryFile second("2");
  std::vector<SptsFile> outputs = {outputFor(first), outputFor(second)};
  outputs[1].file = "/dev/full";
  EXPECT_THROW(writeSptsFiles(sample(), outputs), ToolError);
}

TEST(SptsFiles, ReplaceNothingWhereOneCannotBeHad) {
  const TemporaryFile first("1");
  const TemporaryFile second("2");
  first.write(std::string("former"));
  second.write(std::string("former"));
  std::vector<SptsFile> outputs = {outputFor(first), outputFor(second)};
  outputs[1].configuration.outputTables.pmtPackets.clear();
  EXPECT_THROW(writeSptsFiles(sample(), outputs), ToolError);
  outputs[1] = outputFor(second);
  outputs[1].file = "/no/such/folder/out.ts";
  EXPECT_THROW(writeSptsFiles(sample(), outputs), ToolError);
  EXPECT_EQ("former", first.read());
  EXPECT_EQ("former", second.read());
}

TEST(SptsFiles, OfNoOutputsAreNone) {
  std::vector<SptsFile> none;
  writeSptsFiles(sample(), none);
  EXPECT_TRUE(none.empty());
}

}  // namespace
}  // namespace tevra::tools
