#include "tests/support/socket_waits.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <array>
#include <mutex>

namespace {

using Waits = std::vector<std::chrono::milliseconds>;

std::mutex mutex;
tevra::test::SocketWaits recorded;  // guarded by mutex

void record(Waits tevra::test::SocketWaits::*waits, int fd) {
  // Seconds and microseconds. The form with 64 bits everywhere is not known to emulators.
  std::array<long, 2> timeout = {};
  socklen_t size = sizeof(timeout);
  if (syscall(SYS_getsockopt, fd, SOL_SOCKET, SO_SNDTIMEO_OLD, timeout.data(), &size) == 0 &&
      (timeout[0] != 0 || timeout[1] != 0)) {
    const std::lock_guard lock(mutex);
    (recorded.*waits).push_back(std::chrono::milliseconds(timeout[0] * 1000 + timeout[1] / 1000));
  }
}

}  // namespace

namespace tevra::test {

SocketWaits socketWaits() {
  const std::lock_guard lock(mutex);
  return recorded;
}

void clearSocketWaits() {
  const std::lock_guard lock(mutex);
  recorded = {};
}

}  // namespace tevra::test

// In place of the C library's, also for the libraries.
extern "C" {

int connect(int fd, const sockaddr* address, socklen_t size) {
  record(&tevra::test::SocketWaits::connecting, fd);
  return static_cast<int>(syscall(SYS_connect, fd, address, size));
}

ssize_t send(int fd, const void* bytes, size_t size, int flags) {
  record(&tevra::test::SocketWaits::sending, fd);
  return syscall(SYS_sendto, fd, bytes, size, flags, nullptr, 0);
}

}  // extern "C"
