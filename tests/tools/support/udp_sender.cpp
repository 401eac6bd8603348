#include "tests/tools/support/udp_sender.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <thread>

namespace tevra::tools::test {

void sendDatagram(const std::string& bytes, int port) {
  const int socket = ::socket(AF_INET, SOCK_DGRAM, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_port = htons(static_cast<uint16_t>(port));
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  (void)sendto(socket, bytes.data(), bytes.size(), 0, reinterpret_cast<const sockaddr*>(&address),
               sizeof address);  // lost as datagrams may be
  close(socket);
}

void sendRepeatedly(const std::string& path, int port, const std::atomic<bool>& done) {
  constexpr size_t kDatagram = size_t{7} * 188;
  while (!done) {
    std::ifstream file(path, std::ios::binary);
    std::string bytes(kDatagram, '\0');
    while (!done && file.read(bytes.data(), static_cast<std::streamsize>(bytes.size()))) {
      sendDatagram(bytes, port);
      std::this_thread::sleep_for(std::chrono::microseconds(300));
    }
  }
}

}  // namespace tevra::tools::test
