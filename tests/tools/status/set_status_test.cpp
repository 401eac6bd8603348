#include "tools/status/set_status.h"

#include <gmock/gmock.h>

#include "tests/tools/status/status_samples.h"

namespace tevra::tools {
namespace {

using test::broken;
using test::healthy;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

TEST(SetStatus, IsWellWithoutAFileThatHasNotBeenSaved) {
  EXPECT_THAT(problemsOf(healthy()), IsEmpty());
  SetStatus status = healthy();
  status.mainTaskListens.reset();
  status.kept.pids->highest = 299;
  EXPECT_THAT(problemsOf(status), IsEmpty());
  status.kept.pids.reset();
  EXPECT_THAT(problemsOf(status), IsEmpty());
}

TEST(SetStatus, NamesAllThatIsWrongAndWhatToDo) {
  EXPECT_THAT(
      problemsOf(broken()),
      ElementsAre(
          "no daemon answers",
          "nothing listens at 127.0.0.1:9256: start MainTask, which is told of no table until then",
          "/conf/PIDRemap0 cannot be read (cannot open: Not allowed): run this as root or as its "
          "owner",
          HasSubstr("/conf/Tornel/TableStoreFile0 is damaged (cut\nshort): restore it"),
          "the PID pool is exhausted, PID 300 is beyond 299: stop the daemon, delete PIDRemap0, "
          "start it"));
}

TEST(SetStatus, SendsNobodyToRootForAFileThatRootCannotReadEither) {
  SetStatus status = healthy();
  status.kept.files[0] = {"PIDRemap0", FileState::kUnreadable, "cannot open: a circle", {}};
  EXPECT_THAT(problemsOf(status), ElementsAre("/conf/PIDRemap0 cannot be read (cannot open: a "
                                              "circle)"));
}

TEST(SetStatus, TellsADaemonThatIsBusyFromOneThatIsNotThere) {
  DaemonStatus daemon;
  daemon.answerSeconds = 1;
  EXPECT_EQ("answers", stateOf(daemon));
  daemon.answerSeconds.reset();
  EXPECT_EQ("unreachable", stateOf(daemon));
  daemon.listens = true;
  EXPECT_EQ("silent", stateOf(daemon));
  daemon.listens = false;
  EXPECT_EQ("absent", stateOf(daemon));
}

}  // namespace
}  // namespace tevra::tools
