#include "tests/live/datagrams.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string>

#include "tools/stream/udp_address.h"

namespace tevra::test {
namespace {

/** Some seconds of an output; as much of it as the machine lets this user have. */
void enlargeBuffer(int socket) {
  const int size = 32 * 1024 * 1024;
  if (setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &size, sizeof size) != 0) {
    (void)setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &size, sizeof size);
  }
}

}  // namespace

bool isReceiving(int port) {
  std::ifstream sockets("/proc/self/net/udp");
  for (std::string line; std::getline(sockets, line);) {
    const size_t colon = line.find(':', line.find(':') + 1);
    if (colon != std::string::npos &&
        std::strtol(line.substr(colon + 1, 4).c_str(), nullptr, 16) == port) {
      return true;
    }
  }
  return false;
}

DatagramReceiver::DatagramReceiver(int port)
    : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {
  const int yes = 1;
  enlargeBuffer(socket_);
  (void)setsockopt(socket_, SOL_SOCKET, SO_RXQ_OVFL, &yes, sizeof yes);
  const sockaddr_in address = tools::socketAddress({"127.0.0.1", port});
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("port " + std::to_string(port) + " is taken");
  }
}

DatagramReceiver::~DatagramReceiver() {
  close(socket_);
}

size_t DatagramReceiver::receive(std::chrono::milliseconds time) {
  pollfd waiting = {socket_, POLLIN, 0};
  if (poll(&waiting, 1, static_cast<int>(time.count())) <= 0) {
    return 0;
  }
  iovec data = {buffer_.data(), buffer_.size()};
  alignas(cmsghdr) std::array<char, CMSG_SPACE(sizeof missed_)> control{};
  msghdr message{};
  message.msg_iov = &data;
  message.msg_iovlen = 1;
  message.msg_control = control.data();
  message.msg_controllen = control.size();
  const ssize_t size = recvmsg(socket_, &message, MSG_DONTWAIT);
  for (cmsghdr* part = CMSG_FIRSTHDR(&message); part != nullptr;
       part = CMSG_NXTHDR(&message, part)) {
    if (part->cmsg_level == SOL_SOCKET && part->cmsg_type == SO_RXQ_OVFL) {
      std::memcpy(&missed_, CMSG_DATA(part), sizeof missed_);
    }
  }
  return size < 0 ? 0 : static_cast<size_t>(size);
}

}  // namespace tevra::test
