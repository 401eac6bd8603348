#include "bench/reading_main_task.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <stdexcept>

namespace tevra::bench {
namespace {

constexpr uint16_t kPort = 9256;

int listeningSocket() {
  const int listener = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const int reuse = 1;
  (void)setsockopt(listener, SOL_SOCKET, SO_REUSEADDR, &reuse, sizeof reuse);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(kPort);
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  if (bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
      listen(listener, SOMAXCONN) != 0) {
    throw std::runtime_error("port 9256, MainTask's, is taken");
  }
  return listener;
}

[[noreturn]] void readForEver(int listener) {
  constexpr size_t kBlock = size_t{64} * 1024;
  std::array<char, kBlock> block;
  for (;;) {
    const int connection = accept(listener, nullptr, nullptr);
    while (read(connection, block.data(), block.size()) > 0) {
    }
    close(connection);
  }
}

}  // namespace

ReadingMainTask::ReadingMainTask() {
  const int listener = listeningSocket();
  process_ = fork();
  if (process_ == 0) {
    readForEver(listener);
  }
  close(listener);
  if (process_ < 0) {
    throw std::runtime_error("cannot start MainTask's stand-in");
  }
}

ReadingMainTask::~ReadingMainTask() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace tevra::bench
