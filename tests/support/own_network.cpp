#include "tests/support/own_network.h"

#include <net/if.h>
#include <netinet/in.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>
#include <thread>

namespace tevra::test {
namespace {

constexpr const char* kEntered = "TORNEL_OWN_NETWORK";

bool writeText(const char* file, const std::string& text) {
  std::ofstream stream(file);
  stream << text << std::flush;
  return stream.good();
}

/** Without root's rights a network needs a user namespace, in which everybody stays who he is.
 * False where the system grants none. */
bool enterAsUser() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  if (unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0) {
    return false;
  }
  if (!writeText("/proc/self/setgroups", "deny") ||
      !writeText("/proc/self/uid_map", user + ' ' + user + " 1") ||
      !writeText("/proc/self/gid_map", group + ' ' + group + " 1")) {
    throw std::runtime_error("nobody is who he was in a new user namespace");
  }
  return true;
}

void startLoopback() {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  ifreq request = {};
  std::strcpy(request.ifr_name, "lo");
  request.ifr_flags = IFF_UP | IFF_RUNNING | IFF_MULTICAST;
  const bool started = ioctl(socket, SIOCSIFFLAGS, &request) == 0;
  close(socket);
  if (!started) {
    throw std::runtime_error("the loopback device of a new network does not start");
  }
}

}  // namespace

void waitForTurn() {
  // An address that one socket of a network can have: a lock that ends with its last holder, which
  // is this process or what it has started.
  const int socket = ::socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  std::strcpy(address.sun_path + 1, "tornel-test-ports");
  while (bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    if (errno != EADDRINUSE) {
      throw std::runtime_error("cannot wait for the ports of the tests");
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
  }
}

void enterOwnNetwork() {
  if (std::getenv(kEntered) != nullptr) {
    return;
  }
  if (unshare(CLONE_NEWNET) == 0 || enterAsUser()) {
    startLoopback();
  } else {
    waitForTurn();
  }
  setenv(kEntered, "1", 0);
}

}  // namespace tevra::test
