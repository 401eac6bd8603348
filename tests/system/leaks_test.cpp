#include <gtest/gtest.h>

#include <csignal>
#include <optional>

#include "tests/platform/temporary_directory.h"
#include "tests/system/daemon.h"

// Built with AddressSanitizer only: every daemon of every test is looked through for leaks at its
// end, and here it is shown that one would be found.

namespace tevra::test {
namespace {

TEST(LeaksOfTheDaemon, AreFoundAtItsEnd) {
  const TemporaryDirectory root;
  DaemonSetup setup;
  setup.environment["TORNEL_LEAK_ON_PURPOSE"] = "1";
  Daemon daemon(root.path(), setup);
  ASSERT_EQ(::kill(daemon.pid(), SIGTERM), 0);
  const std::optional<ProcessEnd> end = daemon.waitForEnd();
  ASSERT_TRUE(end);
  EXPECT_NE(end->exitStatus, 0);
  EXPECT_NE(daemon.standardError().find("1000 byte(s) leaked"), std::string::npos)
      << daemon.standardError();
}

}  // namespace
}  // namespace tevra::test
