#include "tools/report/page/multiplex_folds.h"

#include <gmock/gmock.h>

#include "tests/tools/report/report_samples.h"
#include "tools/report/page/multiplex_layout.h"

namespace tevra::tools::report {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string foldsOf(const Report& report) {
  Markup markup;
  drawFolds(report, markup);
  return markup.take();
}

/** One service that is in the SDT alone, and two PIDs in no table. */
Report reportWithMuchToFold() {
  Report report = test::reportOf(2, 1);
  Service& empty = report.services.emplace_back();
  empty.serviceId = 9;
  empty.name = "Empty <one>";
  for (const int pid : {0x700, 0x701}) {
    InputStream stream;
    stream.pid = pid;
    report.others.push_back(stream);
    report.pids[pid].packets = 5;
  }
  return report;
}

TEST(MultiplexFolds, AreNoneWhereAllHasAPlace) {
  EXPECT_EQ("", foldsOf(test::reportOf(2, 2)));
}

TEST(MultiplexFolds, HoldServicesWithoutAPacketAndPidsInNoTable) {
  EXPECT_THAT(
      foldsOf(reportWithMuchToFold()),
      AllOf(HasSubstr("<details class=\"fold\"><summary>1 service without a packet</summary>"),
            HasSubstr("<bdi>Empty &lt;one&gt;</bdi>"), HasSubstr("<td>not in the PAT</td>"),
            HasSubstr("<summary>2 PIDs in no PAT, CAT or PMT: &lt;0.1 %, 10 packets</summary>"),
            HasSubstr(">1792 (0x0700)</td>")));
}

TEST(MultiplexFolds, HaveNoPlaceInThePicture) {
  const MultiplexLayout layout = layoutMultiplex(reportWithMuchToFold());
  ASSERT_EQ(4U, layout.bands.size());
  EXPECT_EQ(0, layout.bands[2].height);
  EXPECT_EQ(layout.bands[2].top, layout.bands[3].top);
  EXPECT_EQ(3U, layout.bands[3].inputRows.size()) << "PAT, EMM, stuffing";
}

TEST(MultiplexFolds, DoNotHoldWhatAnOutputTakes) {
  Report report = reportWithMuchToFold();
  report.services[0].output->streams[3].inputPid = 0x700;
  EXPECT_THAT(foldsOf(report), HasSubstr("<summary>1 PID in no PAT"));
  EXPECT_EQ(4U, layoutMultiplex(report).bands[3].inputRows.size());
}

}  // namespace
}  // namespace tevra::tools::report
