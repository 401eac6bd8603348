#include "tests/support/raw_socket.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>

#include "tests/support/patience.h"

namespace tevra::test {
namespace {

sockaddr_in loopback(int port) {
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

int tcpSocket() {
  return socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
}

/** False when nobody listens. */
bool connectTo(int port, int fd) {
  const sockaddr_in address = loopback(port);
  return connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
}

bool readable(int fd) {
  pollfd poller = {fd, POLLIN, 0};
  const auto milliseconds = std::chrono::duration_cast<std::chrono::milliseconds>(kPatience);
  return poll(&poller, 1, static_cast<int>(milliseconds.count())) == 1;
}

void resetSocket(int fd) {
  const linger atOnce = {1, 0};
  setsockopt(fd, SOL_SOCKET, SO_LINGER, &atOnce, sizeof(atOnce));
  close(fd);
}

}  // namespace

RawConnection::RawConnection(int port) : RawConnection() {
  connect(port);
}

RawConnection::RawConnection() : socket_(tcpSocket()) {
  if (socket_ < 0) {
    throw std::runtime_error("no file descriptor left for a connection");
  }
}

RawConnection::~RawConnection() {
  if (socket_ >= 0) {
    close(socket_);
  }
}

void RawConnection::connect(int port) const {
  if (!connectTo(port, socket_)) {
    throw std::runtime_error("nobody listens on port " + std::to_string(port));
  }
}

void RawConnection::send(const std::string& bytes) const {
  size_t sent = 0;
  while (sent < bytes.size()) {
    const ssize_t result = ::send(socket_, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
    if (result <= 0) {
      return;
    }
    sent += static_cast<size_t>(result);
  }
}

bool RawConnection::closedByPeer() const {
  if (!readable(socket_)) {
    return false;
  }
  char byte = 0;
  return recv(socket_, &byte, 1, 0) <= 0;  // 0: closed; -1: reset
}

std::string RawConnection::receive(size_t length) const {
  std::string received(length, '\0');
  size_t taken = 0;
  while (taken < length && readable(socket_)) {
    const ssize_t got = recv(socket_, received.data() + taken, length - taken, 0);
    if (got <= 0) {
      break;
    }
    taken += static_cast<size_t>(got);
  }
  received.resize(taken);
  return received;
}

void RawConnection::finish() const {
  shutdown(socket_, SHUT_WR);
}

std::optional<std::string> RawConnection::readToEnd() const {
  std::string received;
  std::string buffer(64 * 1024, '\0');
  while (readable(socket_)) {
    const ssize_t got = recv(socket_, buffer.data(), buffer.size(), 0);
    if (got <= 0) {
      return received;
    }
    received.append(buffer, 0, static_cast<size_t>(got));
  }
  return std::nullopt;
}

void RawConnection::reset() {
  resetSocket(socket_);
  socket_ = -1;
}

bool isListening(int port) {
  const int fd = tcpSocket();
  const bool listens = connectTo(port, fd);
  close(fd);
  return listens;
}

RawListener::RawListener(int port, int backlog) : socket_(tcpSocket()) {
  const int on = 1;
  setsockopt(socket_, SOL_SOCKET, SO_REUSEADDR, &on, sizeof(on));
  const sockaddr_in address = loopback(port);
  if (bind(socket_, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) != 0 ||
      listen(socket_, backlog) != 0) {
    close(socket_);
    throw std::runtime_error("cannot listen on port " + std::to_string(port));
  }
}

RawListener::~RawListener() {
  close(socket_);
}

std::string RawListener::takeConnection() const {
  if (!readable(socket_)) {
    return "";
  }
  const int fd = accept4(socket_, nullptr, nullptr, SOCK_CLOEXEC);
  std::string received;
  std::string buffer(64 * 1024, '\0');
  for (ssize_t got = 1; got > 0;) {
    got = recv(fd, buffer.data(), buffer.size(), 0);
    received.append(buffer, 0, static_cast<size_t>(std::max<ssize_t>(got, 0)));
  }
  close(fd);
  return received;
}

FullBacklog::FullBacklog(int port, int connections) {
  const sockaddr_in address = loopback(port);
  for (int number = 0; number < connections; ++number) {
    sockets_.push_back(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    // Those beyond the backlog stay under way: that is what they are for.
    (void)connect(sockets_.back(), reinterpret_cast<const sockaddr*>(&address), sizeof(address));
  }
}

FullBacklog::~FullBacklog() {
  for (const int fd : sockets_) {
    close(fd);
  }
}

}  // namespace tevra::test
