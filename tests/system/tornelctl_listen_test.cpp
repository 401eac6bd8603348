#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/tornelctl.h"

namespace tevra::test {
namespace {

using testing::HasSubstr;
using testing::Not;

/** tornelctl listen in MainTask's place, and a daemon that notifies it. */
class TornelctlListen : public testing::Test {
 protected:
  void start() {
    listener_ = std::make_unique<ChildProcess>(ChildProcess::Setup{{tornelctlPath(), "listen"}});
    ASSERT_TRUE(eventually([] { return isListening(kFirstNotificationPort); }));
    daemon_ = std::make_unique<Daemon>(root_.path());
  }

  [[nodiscard]] bool printed(const std::string& text) const {
    return eventually([&] { return listener_->standardOutput().find(text) != std::string::npos; });
  }

  /** Everything that has been printed when the listener has been told to end. */
  std::string printedInAll() {
    ::kill(listener_->pid(), SIGTERM);
    const auto end = listener_->waitForEnd();
    EXPECT_TRUE(end);
    EXPECT_EQ(end->exitStatus, 0);
    return listener_->standardOutput();
  }

  TemporaryDirectory root_;
  std::unique_ptr<ChildProcess> listener_;
  std::unique_ptr<Daemon> daemon_;
};

// What it prints of a table: tests/tools/listen and tests/tools/changes.

TEST_F(TornelctlListen, PrintsTheSamplesTablesUntilTerminated) {
  start();
  ASSERT_EQ(tornelctl({"feed", samplePath()}).exitStatus, 0);
  EXPECT_TRUE(printed("  configuration requested\n"));
  EXPECT_TRUE(printed("  PAT           transport stream 1101, version 3, 5 programmes\n"));
  EXPECT_TRUE(printed("  EIT schedule  service 104, table 0x50"));
  // What happens to service 102 on the way.
  EXPECT_TRUE(printed("  PMT           service 102, version 31 -> 0, 3 streams"));
  EXPECT_TRUE(printed(" (MPEG-2 audio): eng\n"));
  EXPECT_TRUE(
      printed("~ event 10201 \"Le phare éteint\": running status not running -> running\n"));
  EXPECT_THAT(printedInAll(), Not(HasSubstr("\x1b")));
}

TEST_F(TornelctlListen, SeesTheFrenchRecordingsSchedulesMoveAtOnce) {
  const std::string path = capturePath("french-dtt-si-only.ts");
  if (!std::filesystem::exists(path)) {
    GTEST_SKIP() << path << " is not there";
  }
  start();
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  ASSERT_EQ(tornelctl({"feed", path}).exitStatus, 0);
  EXPECT_TRUE(printed("SDT           transport stream 4, version 16, 5 services, unchanged\n"));
  EXPECT_TRUE(printed("EIT schedule  service 1045, table 0x50, version 1 -> 2, 88 events"));
}

}  // namespace
}  // namespace tevra::test
