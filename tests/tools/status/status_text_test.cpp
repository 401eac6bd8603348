#include <gmock/gmock.h>

#include "tests/platform/scoped_environment.h"
#include "tests/tools/status/status_samples.h"
#include "tools/status/status_output.h"

namespace tevra::tools {
namespace {

using std::chrono::hours;
using test::broken;
using test::healthy;
using test::kSaved;
using testing::HasSubstr;
using testing::Not;

TEST(StatusText, SaysAllOfASet) {
  const tevra::test::ScopedEnvironment zone("TZ", "UTC");
  tzset();
  EXPECT_EQ(
      "MPTS 0\n"
      "  daemon    answers at 127.0.0.1:9224 in 0.412 ms\n"
      "  MainTask  listens at 127.0.0.1:9256\n"
      "  PIDs      3 of 199 used, 101 to 299; slot 3, transport stream 7\n"
      "  below /conf                       saved\n"
      "  PIDRemap0                         2023-11-14 22:13:20, 1 d 01:00:00 ago\n"
      "  Tornel/TableStoreFile0            2023-11-14 22:13:20, 1 d 01:00:00 ago\n"
      "  Tornel/EITTableVersionStoreFile0  not saved yet\n"
      "  service  output  PAT  SDT  PMT  starts left  EIT starts left  EITs         name\n"
      "  -1       -       -    -    -    -            2                -2:5 0x4E:9\n"
      "  101      1201    1    2    3    4            -                -            Uno \"HD\"\n",
      statusText({healthy()}, kSaved + hours(25), 100));
}

TEST(StatusText, StandsInParagraphsWhereLinesAreTooShortForItsColumns) {
  const std::string text = statusText({healthy()}, kSaved, 60);
  EXPECT_THAT(text, HasSubstr("\n  below /conf PIDRemap0\n    saved 2023-"));
  EXPECT_THAT(text,
              HasSubstr("\n  service 101  output 1201  PAT 1  SDT 2  PMT 3\n    starts left 4"));
}

TEST(StatusText, SaysWhatCannotBeReadAndWhatIsNotKnown) {
  SetStatus status = broken();
  status.kept.services.clear();
  status.kept.pids->pool.reset();
  const std::string text = statusText({status}, kSaved - hours(1), 0);
  EXPECT_THAT(text, HasSubstr("  daemon    silent at 127.0.0.1:9224\n"
                              "  MainTask  absent at 127.0.0.1:9256\n"));
  EXPECT_THAT(text, HasSubstr("3 used, of a pool that is not known: give the module's --type"));
  EXPECT_THAT(text, HasSubstr("  unreadable (cannot open: Not allowed)\n"));
  EXPECT_THAT(text, HasSubstr(", in the future, damaged (cut short)\n"));
  EXPECT_THAT(text, Not(HasSubstr("starts left")));
  status.mainTaskListens.reset();
  status.kept = {};
  EXPECT_EQ(
      "MPTS 0\n"
      "  daemon    silent at 127.0.0.1:9224\n"
      "  MainTask  unknown whether it listens at 127.0.0.1:9256\n",
      statusText({status}, kSaved, 0));
}

}  // namespace
}  // namespace tevra::tools
