#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <optional>

#include "tests/platform/temporary_directory.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"

// Built with a sanitizer only. What it finds in a daemon fails the test that started the daemon
// (~Daemon); here it is shown that it finds something.

namespace tevra::test {
namespace {

/** What a daemon in `environment` says until SIGTERM ends it, and how it ends. */
struct Run {
  std::string said;
  std::optional<ProcessEnd> end;
};

Run runWith(const Environment& environment) {
  const TemporaryDirectory root;
  const auto process = runDaemon(root.path(), {"--console", "--level", "4"}, environment);
  EXPECT_TRUE(eventually([&] {
    return process->standardError().find("4 Tornel 0 started ...") != std::string::npos;
  })) << process->standardError();
  ::kill(process->pid(), SIGTERM);
  Run run;
  run.end = process->waitForEnd();
  run.said = process->standardError();
  return run;
}

TEST(SanitizedDaemon, IsFoundToDoWhatItDoesOnPurpose) {
  if (kThreadSanitized) {
    EXPECT_NE(runWith({{"TORNEL_RACE_ON_PURPOSE", "1"}}).said.find(kRaceReport), std::string::npos);
    return;
  }
  const Run run = runWith({{"TORNEL_LEAK_ON_PURPOSE", "1"}});
  ASSERT_TRUE(run.end);
  EXPECT_NE(run.end->exitStatus, 0);
  EXPECT_NE(run.said.find("1000 byte(s) leaked"), std::string::npos) << run.said;
}

TEST(SanitizedDaemon, IsFoundToDoNothingElse) {
  const Run run = runWith({});
  ASSERT_TRUE(run.end);
  EXPECT_EQ(run.said.find(kRaceReport), std::string::npos) << run.said;
  if (kAddressSanitized) {
    EXPECT_EQ(run.end->exitStatus, 0) << run.said;
  }
}

}  // namespace
}  // namespace tevra::test
