#include "tests/system/service_manager.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <array>
#include <cstring>
#include <stdexcept>

#include "tests/system/child_process.h"

namespace tevra::test {

ServiceManager::ServiceManager() : socket_(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const bool fits = path().size() < sizeof(address.sun_path);
  std::strncpy(address.sun_path, path().c_str(), sizeof(address.sun_path) - 1);
  if (!fits || bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0) {
    close(socket_);
    throw std::runtime_error("cannot listen at " + path());
  }
}

ServiceManager::~ServiceManager() {
  close(socket_);
}

std::string ServiceManager::next() const {
  pollfd poller = {socket_, POLLIN, 0};
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience);
  (void)poll(&poller, 1,
             static_cast<int>(milliseconds.count()));  // recv tells how it went
  std::array<char, 256> buffer;
  const ssize_t length = recv(socket_, buffer.data(), buffer.size(), MSG_DONTWAIT);
  return length < 0 ? "" : std::string(buffer.data(), static_cast<size_t>(length));
}

bool ServiceManager::idle() const {
  char byte = 0;
  return recv(socket_, &byte, 1, MSG_DONTWAIT | MSG_PEEK) < 0;
}

}  // namespace tevra::test
