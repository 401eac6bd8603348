#include "tests/support/socket_waits.h"

#include <dlfcn.h>
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

// In place of the C library's, also for the libraries. Those that come next are a sanitizer's,
// where there is one: it takes what is sent and received for an order of things.
extern "C" {

int connect(int fd, const sockaddr* address, socklen_t size) {
  static const auto next = reinterpret_cast<decltype(&connect)>(dlsym(RTLD_NEXT, "connect"));
  record(&tevra::test::SocketWaits::connecting, fd);
  return next(fd, address, size);
}

ssize_t send(int fd, const void* bytes, size_t size, int flags) {
  static const auto next = reinterpret_cast<decltype(&send)>(dlsym(RTLD_NEXT, "send"));
  record(&tevra::test::SocketWaits::sending, fd);
  return next(fd, bytes, size, flags);
}

}  // extern "C"
