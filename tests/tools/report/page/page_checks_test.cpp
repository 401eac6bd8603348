#include <gmock/gmock.h>

#include "tests/tools/report/report_samples.h"
#include "tools/report/page/page_sections.h"

namespace tevra::tools::report {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string sectionOf(const Report& report) {
  Markup markup;
  checksSection(report, markup);
  return markup.take();
}

TEST(PageChecks, ShowEachCheckWithWhatCameOfIt) {
  Report report = test::reportOf(1, 1);
  report.checks = {{1,
                    "5.2.1",
                    "1.5.a",
                    "PMT_error_2",
                    "0.5 s",
                    CheckResult::kFailed,
                    3,
                    0.7,
                    {{256, 2, 0.7}, {512, 1, 0.6}},
                    ""},
                   {1,
                    "5.2.1",
                    "1.6",
                    "PID_error",
                    "5 s",
                    CheckResult::kNotMeasurable,
                    0,
                    std::nullopt,
                    {},
                    "no PCR"}};
  EXPECT_THAT(
      sectionOf(report),
      AllOf(HasSubstr("First priority failed: 1.5.a PMT_error_2."), HasSubstr("<td>256, 512</td>"),
            HasSubstr(">700.0 ms</td>"), HasSubstr("<td class=\"fault\">failed</td>"),
            HasSubstr("<td class=\"none\">not measurable: no PCR</td>")));
}

TEST(PageChecks, ShowTheIntervalsOfBothSides) {
  Report report = test::reportOf(1, 1);
  EXPECT_THAT(sectionOf(report), HasSubstr("Unknown: no PCR"));
  report.intervals = {{"PCR", 257, {101, 102}, 40, 0.01, 0.02, 0.03}};
  report.services[0].output->intervals = {{"PCR", 502, {101}, 40, 0.01, 0.02, 0.03}};
  EXPECT_THAT(sectionOf(report),
              AllOf(HasSubstr("<td>input</td>\n<td>PCR</td>\n<td>service 101, 102</td>"),
                    HasSubstr("<td>output</td>\n<td>PCR</td>\n<td>service 101</td>"),
                    HasSubstr(">502 (0x01F6)</td>"), HasSubstr(">20.0 ms</td>")));
}

}  // namespace
}  // namespace tevra::tools::report
