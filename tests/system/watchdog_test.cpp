#include <gtest/gtest.h>

#include <chrono>

#include "tests/platform/temporary_directory.h"
#include "tests/support/control_client.h"
#include "tests/support/raw_socket.h"
#include "tests/system/daemon.h"
#include "tests/system/service_manager.h"

namespace tevra::test {
namespace {

using Clock = std::chrono::steady_clock;

TEST(DaemonWatchdog, IsKickedAtOnceAfterTheStartSignalAndEveryFiveSeconds) {
  const TemporaryDirectory root;
  const ServiceManager manager;
  DaemonSetup setup;
  setup.environment = {{"NOTIFY_SOCKET", manager.path()}};
  const Daemon daemon(root.path(), setup);
  const auto start = Clock::now();
  EXPECT_EQ(manager.next(), "READY=1");
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
  const auto firstKick = Clock::now();
  EXPECT_LT(firstKick - start, std::chrono::seconds(4));
  EXPECT_TRUE(manager.idle());
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
  const auto interval = Clock::now() - firstKick;
  EXPECT_GT(interval, std::chrono::milliseconds(4800));
  EXPECT_LT(interval, std::chrono::seconds(9));
}

TEST(DaemonWatchdog, TheStartIsSignalledOnceThePortIsOpen) {
  const TemporaryDirectory root;
  const ServiceManager manager;
  const auto process = runDaemon(root.path(), {}, {{"NOTIFY_SOCKET", manager.path()}});
  EXPECT_EQ(manager.next(), "READY=1");
  EXPECT_TRUE(isListening(kFirstControlPort));
}

TEST(DaemonWatchdog, AManagerThatIsNotThereDoesNoHarm) {
  const TemporaryDirectory root;
  DaemonSetup setup;
  setup.environment = {{"NOTIFY_SOCKET", root / "nobody"}};
  const Daemon daemon(root.path(), setup);
  ControlClient client;
  EXPECT_TRUE(client->sendCmd(7));
}

}  // namespace
}  // namespace tevra::test
