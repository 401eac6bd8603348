#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "platform/module_utils.h"
#include "tests/platform/scoped_environment.h"
#include "tests/system/service_manager.h"

namespace {

using tevra::test::ScopedEnvironment;

class UnderAServiceManager : public testing::Test {
 protected:
  tevra::test::ServiceManager manager;

 private:
  std::string path_ = manager.path();
  ScopedEnvironment environment_{"NOTIFY_SOCKET", path_.c_str()};
};

TEST_F(UnderAServiceManager, StartIsSignalledOnce) {
  SignalServiceIsStarted();
  EXPECT_EQ(manager.next(), "READY=1");
  EXPECT_TRUE(manager.idle());
}

TEST_F(UnderAServiceManager, EveryKickIsSignalled) {
  const int task = watchdog_register_task();
  EXPECT_TRUE(manager.idle());
  watchdog_kick(task);
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
  EXPECT_TRUE(manager.idle());
  watchdog_kick(task);
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
}

TEST_F(UnderAServiceManager, KicksAreStillSignalledAfterTheStart) {
  SignalServiceIsStarted();
  EXPECT_EQ(manager.next(), "READY=1");
  watchdog_kick(watchdog_register_task());
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
}

TEST(WithoutAServiceManager, KicksAndTheStartSignalDoNothing) {
  const ScopedEnvironment environment("NOTIFY_SOCKET", nullptr);
  watchdog_kick(watchdog_register_task());
  SignalServiceIsStarted();
  EXPECT_EQ(std::getenv("NOTIFY_SOCKET"), nullptr);
}

TEST(WithoutAServiceManager, ASocketThatNobodyServesDoesNoHarm) {
  const ScopedEnvironment environment("NOTIFY_SOCKET", "/nonexistent/notify");
  watchdog_kick(watchdog_register_task());
  SignalServiceIsStarted();
  EXPECT_STREQ(std::getenv("NOTIFY_SOCKET"), "/nonexistent/notify");
}

TEST(Watchdog, RegisteringGivesATaskNumber) {
  EXPECT_EQ(watchdog_register_task(), 1);
}

TEST(Watchdog, UnregisteringFailsForAnotherTask) {
  const int task = watchdog_register_task();
  EXPECT_EQ(watchdog_unregister_task(task + 1), -1);
  EXPECT_EQ(watchdog_unregister_task(0), -1);
  EXPECT_EQ(watchdog_unregister_task(task), 0);
}

TEST(Watchdog, UnregisteringTwiceFails) {
  const int task = watchdog_register_task();
  EXPECT_EQ(watchdog_unregister_task(task), 0);
  EXPECT_EQ(watchdog_unregister_task(task), -1);
}

}  // namespace
