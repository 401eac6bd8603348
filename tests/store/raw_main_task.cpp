#include "tests/store/raw_main_task.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace tevra::test {
namespace {

constexpr int kPatienceMs = 20000;
constexpr int kReceiveBuffer = 64 * 1024;

sockaddr_in loopback(uint16_t port) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(port);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  return address;
}

/** Binds to a free port and returns it. */
uint16_t bindToFreePort(int fd) {
  sockaddr_in address = loopback(0);
  socklen_t length = sizeof(address);
  EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), length), 0) << strerror(errno);
  EXPECT_EQ(getsockname(fd, reinterpret_cast<sockaddr*>(&address), &length), 0);
  return ntohs(address.sin_port);
}

bool readable(int fd, int timeoutMs) {
  pollfd waiting = {fd, POLLIN, 0};
  return poll(&waiting, 1, timeoutMs) == 1;
}

}  // namespace

RawMainTask::RawMainTask(int backlog) : listener_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  // Accepted sockets inherit it.
  setsockopt(listener_, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof(kReceiveBuffer));
  port_ = bindToFreePort(listener_);
  EXPECT_EQ(listen(listener_, backlog), 0) << strerror(errno);
}

RawMainTask::~RawMainTask() {
  if (connection_ >= 0) {
    close(connection_);
  }
  close(listener_);
}

void RawMainTask::accept() {
  ASSERT_TRUE(readable(listener_, kPatienceMs)) << "nobody connects";
  if (connection_ >= 0) {
    close(connection_);
  }
  connection_ = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
  ASSERT_GE(connection_, 0) << strerror(errno);
}

bool RawMainTask::connectionWaits() {
  return readable(listener_, 50);
}

std::string RawMainTask::readToEnd() {
  const std::atomic<int> noPause(0);
  return readToEnd(noPause);
}

std::string RawMainTask::readToEnd(const std::atomic<int>& pauseMs) {
  std::string received;
  std::vector<char> buffer(size_t{16} * 1024);
  for (;;) {
    std::this_thread::sleep_for(std::chrono::milliseconds(pauseMs));
    if (!readable(connection_, kPatienceMs)) {
      ADD_FAILURE() << "the connection stays open";
      return received;
    }
    const ssize_t count = recv(connection_, buffer.data(), buffer.size(), 0);
    EXPECT_GE(count, 0) << strerror(errno);
    if (count <= 0) {
      return received;
    }
    received.append(buffer.data(), static_cast<size_t>(count));
  }
}

void RawMainTask::reset() {
  const linger abort = {1, 0};
  setsockopt(connection_, SOL_SOCKET, SO_LINGER, &abort, sizeof(abort));
  close(connection_);
  connection_ = -1;
}

RefusingPort::RefusingPort() : socket_(socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  port_ = bindToFreePort(socket_);
}

RefusingPort::~RefusingPort() {
  close(socket_);
}

}  // namespace tevra::test
