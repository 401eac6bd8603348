#include "tools/stream/udp_receiver.h"

#include <linux/sock_diag.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <string>
#include <thread>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kReceiveBuffer = 4 * 1024 * 1024;  // half a second of a full multiplex
constexpr int kPatience = 20;                    // ms, for what ends the receiver
/** Little beside the buffer of the kernel, a dozen datagrams of a full multiplex. */
constexpr std::chrono::milliseconds kGathering(2);

[[noreturn]] void fail(const std::string& what, const UdpAddress& address) {
  throw ToolError("cannot " + what + " " + urlOf(address) + ": " +
                  explained(errno, socketAddress(address)));
}

/** As large as it may be: beyond the limit of all others with the rights of an administrator. */
void enlargeBuffer(int socket) {
  if (setsockopt(socket, SOL_SOCKET, SO_RCVBUFFORCE, &kReceiveBuffer, sizeof kReceiveBuffer) != 0) {
    (void)setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  }
}

void joinGroup(int socket, const UdpAddress& group) {
  ip_mreq membership{};
  membership.imr_multiaddr = socketAddress(group).sin_addr;
  if (setsockopt(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof membership) != 0) {
    fail("join", group);
  }
}

/** A socket that receives at `address`; the caller closes it. */
int openSocket(const UdpAddress& address) {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) {
    fail("receive at", address);
  }
  enlargeBuffer(socket);
  const sockaddr_in local = socketAddress(address);
  // Several may listen to a group. What comes to an address only one of them would get.
  const int shared = IN_MULTICAST(ntohl(local.sin_addr.s_addr)) ? 1 : 0;
  (void)setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &shared, sizeof shared);
  try {
    if (bind(socket, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
      fail("receive at", address);
    }
    if (shared != 0) {
      joinGroup(socket, address);
    }
  } catch (const ToolError&) {
    close(socket);
    throw;
  }
  return socket;
}

}  // namespace

UdpReceiver::UdpReceiver(const UdpAddress& address) : socket_(openSocket(address)) {}

UdpReceiver::~UdpReceiver() {
  close(socket_);
}

size_t UdpReceiver::receive(uint8_t* buffer, size_t size) {
  const ssize_t received = recv(socket_, buffer, size, MSG_DONTWAIT);
  if (received >= 0) {
    return static_cast<size_t>(received);
  }
  pollfd socket = {socket_, POLLIN, 0};
  if (poll(&socket, 1, kPatience) > 0) {
    std::this_thread::sleep_for(kGathering);  // several are taken for one time that it wakes up
  }
  return 0;
}

uint64_t UdpReceiver::dropped() const {
  std::array<uint32_t, SK_MEMINFO_VARS> account{};
  socklen_t size = sizeof account;
  (void)getsockopt(socket_, SOL_SOCKET, SO_MEMINFO, account.data(), &size);  // or 0 are known of
  return account[SK_MEMINFO_DROPS];
}

}  // namespace tevra::tools
