#include "tools/extract/spts_output.h"

#include <gtest/gtest.h>

#include "tests/tools/support/sample_answer.h"
#include "tests/tools/support/temporary_file.h"
#include "tests/tools/support/ts_builder.h"
#include "tools/outputs/pid_attributes.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kInputVideo = 512;
constexpr int kVideo = 502;
constexpr int kOtherVideo = 504;

class SptsOutputTest : public testing::Test {
 protected:
  SptsOutputTest() { output_.open(); }

  static SptsFile makeOutput(const std::string& path) {
    SptsFile output;
    output.file = path;
    output.configuration = test::sampleAnswer().at(1201);
    output.configuration.pidItems.resize(2);
    return output;
  }
  /** The answer that has the video on another PID. */
  static SPTSConfiguration otherAnswer() {
    SPTSConfiguration answer = test::sampleAnswer().at(1201);
    answer.pidItems = {test::pidItem(256, 501, kPidPmt),
                       test::pidItem(kInputVideo, kOtherVideo, kPidPcr | kPidEs)};
    answer.outputTables.dvbTables.pmt.pcrPid = kOtherVideo;
    return answer;
  }
  /** So many packets with a PCR. */
  void push(int packets) {
    for (int i = 0; i < packets; ++i) {
      output_.push(input_.stream(kInputVideo, 0, pcr_ += kSystemClock / 100));
    }
  }

  test::PacketWriter input_;
  int64_t pcr_ = 0;
  test::TemporaryFile path_{"out"};
  SptsFile file_ = makeOutput(path_.path());
  SptsOutput output_{file_, SptsWriter::Timing::kAtOnce};
};

TEST_F(SptsOutputTest, ShowsWhatIsFlushedWhileItIsWritten) {
  push(3);
  output_.flush();
  EXPECT_EQ(6U, path_.readPackets().size()) << "with three tables";
}

TEST_F(SptsOutputTest, IsAccountedForOverANewAnswer) {
  push(20);
  file_.configuration = otherAnswer();
  output_.configure();
  push(30);
  output_.finish();
  EXPECT_EQ(50U, file_.streamPackets);
  EXPECT_EQ(50U, file_.pcrs);
  EXPECT_EQ(20U, file_.pidPackets.at(kVideo));
  EXPECT_EQ(30U, file_.pidPackets.at(kOtherVideo));
  EXPECT_EQ(path_.readPackets().size(), file_.streamPackets + file_.tablePackets);
  EXPECT_NEAR(0.49, file_.seconds.value(), 0.001);
  EXPECT_TRUE(file_.warnings.empty());
}

TEST_F(SptsOutputTest, CountsGapsAndWarnsOfThem) {
  push(2);
  input_.lose(kInputVideo, 1);
  push(2);
  output_.finish();
  EXPECT_EQ((std::map<int, uint64_t>{{kVideo, 1}}), file_.pidGaps);
  EXPECT_EQ(std::vector<std::string>{"1 gap in the packets of output PID 502 (MPEG-2 video)"},
            file_.warnings);
}

TEST_F(SptsOutputTest, KeepsTheFormerAnswerWhereTheNewOneCannotBeUsed) {
  push(20);
  file_.configuration = otherAnswer();
  file_.configuration.outputTables.pmtPackets.clear();
  EXPECT_THROW(output_.configure(), ToolError);
  push(30);
  output_.finish();
  EXPECT_EQ(50U, file_.pcrs);
  EXPECT_EQ(50U, file_.pidPackets.at(kVideo));
  EXPECT_EQ(kVideo, file_.configuration.outputTables.dvbTables.pmt.pcrPid);
  EXPECT_TRUE(file_.warnings.empty());
}

}  // namespace
}  // namespace tevra::tools
