#include <gtest/gtest.h>

#include <csignal>
#include <memory>
#include <optional>
#include <string>

#include "tests/platform/temporary_directory.h"
#include "tests/support/sanitizers.h"
#include "tests/system/daemon.h"

// Built with a sanitizer only. What it finds in a daemon fails the test that started the daemon
// (~Daemon); here it is shown that it finds something.

namespace tevra::test {
namespace {

/** What a daemon in `environment` says until SIGTERM ends it, and how it ends. */
struct Outcome {
  std::string said;
  std::optional<ProcessEnd> end;
};

Outcome runWith(const Environment& environment) {
  const TemporaryDirectory root;
  const auto process = runDaemon(root.path(), {"--console", "--level", "4"}, environment);
  EXPECT_TRUE(eventually([&] {
    return process->standardError().find("4 Tornel 0 started ...") != std::string::npos;
  })) << process->standardError();
  ::kill(process->pid(), SIGTERM);
  Outcome outcome;
  outcome.end = process->waitForEnd();
  outcome.said = process->standardError();
  return outcome;
}

TEST(SanitizedDaemon, IsFoundToDoWhatItDoesOnPurpose) {
  if (kThreadSanitized) {
    EXPECT_NE(runWith({{"TORNEL_RACE_ON_PURPOSE", "1"}}).said.find(kRaceReport), std::string::npos);
    return;
  }
  const Outcome outcome = runWith({{"TORNEL_LEAK_ON_PURPOSE", "1"}});
  ASSERT_TRUE(outcome.end);
  EXPECT_NE(outcome.end->exitStatus, 0);
  EXPECT_NE(outcome.said.find("1000 byte(s) leaked"), std::string::npos) << outcome.said;
}

TEST(SanitizedDaemon, IsFoundToDoNothingElse) {
  const Outcome outcome = runWith({});
  ASSERT_TRUE(outcome.end);
  EXPECT_EQ(outcome.said.find(kRaceReport), std::string::npos) << outcome.said;
  if (kAddressSanitized) {
    EXPECT_EQ(outcome.end->exitStatus, 0) << outcome.said;
  }
}

}  // namespace
}  // namespace tevra::test
