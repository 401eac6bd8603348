#include "tests/support/own_network.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <thread>

namespace tevra::test {
namespace {

constexpr uint16_t kPort = 9224;  // the daemon's, which the tests compete for

/** Listens on the port for a moment, and is reached there. */
bool usePort() {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(kPort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  const auto* const where = reinterpret_cast<const sockaddr*>(&address);
  const int server = socket(AF_INET, SOCK_STREAM, 0);
  const int client = socket(AF_INET, SOCK_STREAM, 0);
  const int again = 1;
  setsockopt(server, SOL_SOCKET, SO_REUSEADDR, &again, sizeof again);
  const bool reached = bind(server, where, sizeof address) == 0 && listen(server, 1) == 0 &&
                       connect(client, where, sizeof address) == 0;
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  return reached;
}

/** A process that enters a network of its own, uses the port there and ends with 0 if it could. */
pid_t startUser() {
  const pid_t process = fork();
  if (process == 0) {
    bool used = false;
    try {
      unsetenv("TORNEL_OWN_NETWORK");
      enterOwnNetwork();
      used = usePort();
    } catch (const std::exception&) {
      used = false;
    }
    _exit(used ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  return process;
}

TEST(OwnNetwork, HasAPortThatAnotherProcessUsesAtTheSameTime) {
  for (const pid_t user : std::array{startUser(), startUser()}) {
    int status = -1;
    ASSERT_EQ(waitpid(user, &status, 0), user);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), EXIT_SUCCESS);
  }
}

}  // namespace
}  // namespace tevra::test
