#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/service_manager.h"

// How the process ends, and what it writes where; what a command line means is tested in tests/app.

namespace tevra::test {
namespace {

class DaemonCommandLine : public testing::Test {
 protected:
  /** Runs the daemon until it ends by itself. */
  void run(const std::vector<std::string>& arguments, const Environment& environment = {}) {
    const auto process = runDaemon(root_.path(), arguments, environment);
    const auto end = process->waitForEnd();
    ASSERT_TRUE(end) << "still runs, having written:\n" << process->standardError();
    end_ = *end;
    out_ = process->standardOutput();
    err_ = process->standardError();
  }

  TemporaryDirectory root_;
  ProcessEnd end_;
  std::string out_;
  std::string err_;
};

TEST_F(DaemonCommandLine, VersionIsPrintedAlone) {
  ASSERT_NO_FATAL_FAILURE(run({"--version"}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(out_, "0.9.1\n");
  EXPECT_EQ(err_, "");
}

TEST_F(DaemonCommandLine, AnMptsThatTheModuleTypeDoesNotAllowEndsWithStatusZeroAndLeavesNoTrace) {
  const ServiceManager manager;
  ASSERT_NO_FATAL_FAILURE(run({"-s", "3", "-c", "-l", "7"},
                              {{"TEVRA_MODULE_TYPE", "6"}, {"NOTIFY_SOCKET", manager.path()}}));
  EXPECT_EQ(end_.exitStatus, 0);
  EXPECT_EQ(err_, "3 Tornel: MPTSid [3] not supported.\n");
  EXPECT_TRUE(manager.idle());  // neither started nor kicked
  EXPECT_FALSE(isListening(kFirstControlPort + 3));
  EXPECT_TRUE(std::filesystem::is_empty(root_.path()));
}

}  // namespace
}  // namespace tevra::test
