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

namespace tevra::test {
namespace {

sockaddr_in localAddress(int port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int openSocket() {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) {
    throw std::runtime_error("no socket");
  }
  return socket;
}

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

DatagramSender::DatagramSender(int port) : socket_(openSocket()) {
  const sockaddr_in address = localAddress(port);
  if (connect(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    throw std::runtime_error("nothing can be sent to port " + std::to_string(port));
  }
}

DatagramSender::~DatagramSender() {
  close(socket_);
}

void DatagramSender::send(const std::array<tools::TsPacket, kPackets>& packets) {
  static_assert(sizeof packets == kPackets * tools::kTsPacketSize);
  if (::send(socket_, packets.data(), sizeof packets, 0) != sizeof packets) {
    ++refused_;
  }
}

DatagramReceiver::DatagramReceiver(int port) : socket_(openSocket()) {
  const int yes = 1;
  enlargeBuffer(socket_);
  (void)setsockopt(socket_, SOL_SOCKET, SO_RXQ_OVFL, &yes, sizeof yes);
  const sockaddr_in address = localAddress(port);
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
