#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>
#include <string>

#include "platform/module_utils.h"
#include "tests/platform/scoped_environment.h"
#include "tests/platform/temporary_directory.h"

namespace {

using tevra::test::ScopedEnvironment;

/** The service manager's end of the notification protocol (sd_notify(3)). */
class NotificationSocket {
 public:
  NotificationSocket() : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (path().size() >= sizeof(address.sun_path)) {
      throw std::runtime_error("temporary directory too long for a socket");
    }
    std::memcpy(address.sun_path, path().c_str(), path().size());
    if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
      throw std::runtime_error("cannot bind");
    }
  }
  ~NotificationSocket() { close(socket_); }
  NotificationSocket(const NotificationSocket&) = delete;
  NotificationSocket& operator=(const NotificationSocket&) = delete;

  [[nodiscard]] std::string path() const { return directory_ / "notify"; }

  /** The oldest message not yet taken; empty when there is none. */
  [[nodiscard]] std::string next() const {
    std::array<char, 256> buffer;
    const ssize_t length = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
    return length < 0 ? "" : std::string(buffer.data(), static_cast<size_t>(length));
  }

 private:
  tevra::test::TemporaryDirectory directory_;
  int socket_;
};

class UnderAServiceManager : public testing::Test {
 protected:
  NotificationSocket manager;

 private:
  std::string path_ = manager.path();
  ScopedEnvironment environment_{"NOTIFY_SOCKET", path_.c_str()};
};

TEST_F(UnderAServiceManager, StartIsSignalledOnce) {
  SignalServiceIsStarted();
  EXPECT_EQ(manager.next(), "READY=1");
  EXPECT_EQ(manager.next(), "");
}

TEST_F(UnderAServiceManager, EveryKickIsSignalled) {
  const int task = watchdog_register_task();
  EXPECT_EQ(manager.next(), "");
  watchdog_kick(task);
  EXPECT_EQ(manager.next(), "WATCHDOG=1");
  EXPECT_EQ(manager.next(), "");
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

TEST(Watchdog, UnregisteringSucceedsForTheRegisteredTask) {
  EXPECT_EQ(watchdog_unregister_task(watchdog_register_task()), 0);
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
