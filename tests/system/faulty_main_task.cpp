#include "tests/system/faulty_main_task.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <stdexcept>
#include <utility>

#include "tests/support/control_client.h"

namespace tevra::test {
namespace {

/** Reads up to `bytes`, less at the connection's end. */
void take(int socket, size_t bytes) {
  std::vector<char> buffer(64 * 1024);
  while (bytes > 0) {
    const ssize_t got = recv(socket, buffer.data(), std::min(bytes, buffer.size()), 0);
    if (got <= 0) {
      return;
    }
    bytes -= static_cast<size_t>(got);
  }
}

int listenOn(int port) {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int on = 1;
  setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &on, sizeof on);
  sockaddr_in address = {};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  constexpr int kBacklog = 64;
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, kBacklog) != 0) {
    close(listener);
    throw std::runtime_error("cannot listen on port " + std::to_string(port));
  }
  return listener;
}

}  // namespace

FaultyMainTask::FaultyMainTask(int32_t mptsIndex, Behaviour behaviour)
    : behaviour_(std::move(behaviour)),
      listener_(listenOn(kFirstNotificationPort + mptsIndex)),
      acceptor_([this] { accept(); }) {}

FaultyMainTask::~FaultyMainTask() {
  stopping_ = true;
  shutdown(listener_, SHUT_RDWR);  // wakes accept
  acceptor_.join();
  {
    const std::lock_guard lock(mutex_);
    for (const int socket : open_) {
      shutdown(socket, SHUT_RDWR);  // wakes recv
    }
  }
  for (std::thread& thread : threads_) {
    thread.join();
  }
  for (const int socket : open_) {
    close(socket);
  }
  close(listener_);
}

size_t FaultyMainTask::connections() {
  const std::lock_guard lock(mutex_);
  return connections_;
}

void FaultyMainTask::accept() {
  for (;;) {
    const int socket = accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
    if (socket < 0) {
      return;
    }
    const std::lock_guard lock(mutex_);
    ++connections_;
    open_.insert(socket);
    threads_.emplace_back([this, socket] { behave(socket); });
  }
}

void FaultyMainTask::behave(int socket) {
  const End end = behaviour_(socket, stopping_);
  if (end == End::kStayOpen) {
    return;
  }
  const linger atOnce = {end == End::kReset ? 1 : 0, 0};
  setsockopt(socket, SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
  const std::lock_guard lock(mutex_);
  open_.erase(socket);
  close(socket);
}

FaultyMainTask::Behaviour thatNeverReads() {
  return [](int, const std::atomic<bool>&) { return FaultyMainTask::End::kStayOpen; };
}

FaultyMainTask::Behaviour thatClosesAfter(size_t bytes) {
  return [bytes](int socket, const std::atomic<bool>&) {
    take(socket, bytes);
    return FaultyMainTask::End::kClose;
  };
}

FaultyMainTask::Behaviour thatResetsAfter(size_t bytes) {
  return [bytes](int socket, const std::atomic<bool>&) {
    take(socket, bytes);
    return FaultyMainTask::End::kReset;
  };
}

FaultyMainTask::Behaviour thatAnswers(const std::string& bytes) {
  return [bytes](int socket, const std::atomic<bool>&) {
    (void)send(socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);  // the peer may not want it
    take(socket, SIZE_MAX);
    return FaultyMainTask::End::kClose;
  };
}

}  // namespace tevra::test
