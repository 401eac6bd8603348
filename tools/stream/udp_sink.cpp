#include "tools/stream/udp_sink.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "tools/stream/udp_address.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr timeval kPatience = {0, 200'000};

[[noreturn]] void fail(const std::string& name, const std::string& why) {
  throw ToolError("cannot send to " + name + ": " + why);
}

/** The address that "udp://ADDRESS:PORT" means. */
sockaddr_in addressOf(const std::string& name) {
  if (name.compare(0, kUdpScheme.size(), kUdpScheme) != 0) {
    fail(name, "packets are sent without RTP, to udp://ADDRESS:PORT");
  }
  return socketAddress(parseUdpAddress(name));
}

/** Whether the kernel knows a way there; errno says why not. */
bool isReachable(int socket, const sockaddr_in& address) {
  if (connect(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0) {
    return false;
  }
  // Only a socket without a peer is spared the answers of a machine where nobody listens.
  const sockaddr nobody = {AF_UNSPEC, {}};
  return connect(socket, &nobody, sizeof nobody) == 0;
}

/** The caller closes it. */
int openSocket(const sockaddr_in& address, const std::string& name) {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0 || !isReachable(socket, address)) {
    const int error = errno;
    ::close(socket);
    fail(name, explained(error, address));
  }
  (void)setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &kPatience, sizeof kPatience);
  return socket;
}

}  // namespace

UdpSink::UdpSink(const std::string& name)
    : address_(addressOf(name)), socket_(openSocket(address_, name)) {}

UdpSink::~UdpSink() {
  ::close(socket_);
}

void UdpSink::write(const TsPacket& packet) {
  std::copy_n(packet.data(), kTsPacketSize, datagram_.data() + size_);
  size_ += kTsPacketSize;
  if (size_ == datagram_.size()) {
    send();
  }
}

void UdpSink::flush() {
  if (size_ != 0) {
    send();
  }
}

void UdpSink::send() {
  ssize_t sent = 0;
  do {
    sent = sendto(socket_, datagram_.data(), size_, 0, reinterpret_cast<const sockaddr*>(&address_),
                  sizeof address_);
  } while (sent < 0 && errno == EINTR);
  if (sent < 0) {
    ++lost_;
    error_ = errno;
  }
  size_ = 0;
}

std::vector<std::string> UdpSink::faults() const {
  if (lost_ == 0) {
    return {};
  }
  return {counted(lost_, "datagram") + " could not be sent: " + std::strerror(error_)};
}

}  // namespace tevra::tools
