#include "tests/tools/support/failing_send.h"

#include <dlfcn.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>

namespace {

std::atomic<int> sendError{0};  // of every datagram, while it is not 0

}  // namespace

namespace tevra::tools::test {

FailingSend::FailingSend(int error) {
  sendError = error;
}

FailingSend::~FailingSend() {
  sendError = 0;
}

}  // namespace tevra::tools::test

// In place of the C library's. What comes next is a sanitizer's, where there is one.
extern "C" ssize_t sendto(int fd, const void* bytes, size_t size, int flags,
                          const sockaddr* address, socklen_t addressSize) {
  static const auto next = reinterpret_cast<decltype(&sendto)>(dlsym(RTLD_NEXT, "sendto"));
  if (sendError != 0) {
    errno = sendError;
    return -1;
  }
  return next(fd, bytes, size, flags, address, addressSize);
}
