#include "tests/tools/support/udp_receiver.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

namespace tevra::tools::test {
namespace {

constexpr int kPatience = 10'000;  // ms
constexpr size_t kLargestDatagram = 65536;
constexpr int kReceiveBuffer = 4 * 1024 * 1024;

bool isThere(int socket, int milliseconds) {
  pollfd polled = {socket, POLLIN, 0};
  return poll(&polled, 1, milliseconds) > 0;
}

}  // namespace

UdpReceiver::UdpReceiver(int port) : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  (void)setsockopt(socket_, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("port " + std::to_string(port) + " is taken");
  }
}

UdpReceiver::~UdpReceiver() {
  close(socket_);
}

std::string UdpReceiver::receive() const {
  std::string datagram(kLargestDatagram, '\0');
  const ssize_t size =
      isThere(socket_, kPatience) ? recv(socket_, datagram.data(), datagram.size(), 0) : 0;
  datagram.resize(static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return datagram;
}

bool UdpReceiver::hasMore() const {
  return isThere(socket_, 0);
}

}  // namespace tevra::tools::test
