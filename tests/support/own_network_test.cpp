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

sockaddr_in loopback(uint16_t port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/** A port that nobody has: what both users then want. */
uint16_t freePort() {
  sockaddr_in address = loopback(0);
  socklen_t size = sizeof address;
  const int server = socket(AF_INET, SOCK_STREAM, 0);
  EXPECT_EQ(bind(server, reinterpret_cast<const sockaddr*>(&address), size), 0);
  EXPECT_EQ(getsockname(server, reinterpret_cast<sockaddr*>(&address), &size), 0);
  close(server);
  return ntohs(address.sin_port);
}

/** Listens on the port for a moment, and is reached there. */
bool usePort(uint16_t port) {
  const sockaddr_in address = loopback(port);
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

/** A process that makes the port its own, uses it and ends with 0 if it could. */
pid_t startUser(uint16_t port, void (*makeItsOwn)()) {
  const pid_t process = fork();
  if (process == 0) {
    bool used = false;
    try {
      unsetenv("TORNEL_OWN_NETWORK");
      makeItsOwn();
      used = usePort(port);
    } catch (const std::exception&) {
      used = false;
    }
    _exit(used ? EXIT_SUCCESS : EXIT_FAILURE);
  }
  return process;
}

void expectThatTwoCanUseOnePort(void (*makeItsOwn)()) {
  const uint16_t port = freePort();
  for (const pid_t user : std::array{startUser(port, makeItsOwn), startUser(port, makeItsOwn)}) {
    int status = -1;
    ASSERT_EQ(waitpid(user, &status, 0), user);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_EQ(WEXITSTATUS(status), EXIT_SUCCESS);
  }
}

TEST(OwnNetwork, HasAPortThatAnotherProcessUsesAtTheSameTime) {
  expectThatTwoCanUseOnePort(enterOwnNetwork);
}

TEST(OwnNetwork, IsDoneWithoutByTakingTurns) {
  expectThatTwoCanUseOnePort(waitForTurn);
}

}  // namespace
}  // namespace tevra::test
