#include "tools/stream/udp_source.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <utility>

#include "tools/stream/ts_packet.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kReceiveBuffer = 4 * 1024 * 1024;  // half a second of a full multiplex

constexpr size_t kRtpHeader = 12;
constexpr size_t kRtpWord = 4;

[[noreturn]] void fail(const std::string& what, const std::string& name) {
  throw ToolError("cannot " + what + " " + name + ": " + std::strerror(errno));
}

sockaddr_in socketAddress(const UdpAddress& address) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(static_cast<uint16_t>(address.port));
  (void)inet_pton(AF_INET, address.address.c_str(), &result.sin_addr);  // has been parsed
  return result;
}

void joinGroup(int socket, const sockaddr_in& group, const std::string& name) {
  ip_mreq membership{};
  membership.imr_multiaddr = group.sin_addr;
  if (setsockopt(socket, IPPROTO_IP, IP_ADD_MEMBERSHIP, &membership, sizeof membership) != 0) {
    fail("join", name);
  }
}

/** A socket that receives at `address`; the caller closes it. */
int openSocket(const UdpAddress& address, const std::string& name) {
  const int socket = ::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (socket < 0) {
    fail("receive at", name);
  }
  // Several may listen to a group; a larger buffer is taken as far as the kernel allows.
  const int yes = 1;
  (void)setsockopt(socket, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
  (void)setsockopt(socket, SOL_SOCKET, SO_RCVBUF, &kReceiveBuffer, sizeof kReceiveBuffer);
  const sockaddr_in local = socketAddress(address);
  try {
    if (bind(socket, reinterpret_cast<const sockaddr*>(&local), sizeof local) != 0) {
      fail("receive at", name);
    }
    if (IN_MULTICAST(ntohl(local.sin_addr.s_addr))) {
      joinGroup(socket, local, name);
    }
  } catch (const ToolError&) {
    close(socket);
    throw;
  }
  return socket;
}

std::string secondsText(std::chrono::steady_clock::duration time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  return seconds == 0 ? "less than 1 s" : std::to_string(seconds) + " s";
}

std::string noPacket(const std::string& name, const std::string& time) {
  return "no packet came from " + name + " in " + time +
         ": is the stream sent there, and does a firewall let it in?";
}

}  // namespace

size_t rtpPayloadOffset(const uint8_t* datagram, size_t size) {
  if (size < kRtpHeader || datagram[0] == kTsSyncByte || (datagram[0] >> 6) != 2) {
    return 0;
  }
  size_t offset = kRtpHeader + kRtpWord * (datagram[0] & 0x0F);
  const bool extended = (datagram[0] & 0x10) != 0;
  if (extended && offset + kRtpWord <= size) {
    const auto words = static_cast<size_t>(datagram[offset + 2] << 8 | datagram[offset + 3]);
    offset += kRtpWord + kRtpWord * words;
  }
  return offset <= size ? offset : 0;
}

UdpSource::UdpSource(const UdpAddress& address, LiveOptions live)
    : name_(urlOf(address)), live_(std::move(live)), socket_(openSocket(address, name_)) {
  if (!live_.onSilence) {
    live_.onSilence = [this](std::chrono::milliseconds silence) { failWhenDead(silence); };
  }
}

UdpSource::~UdpSource() {
  close(socket_);
}

size_t UdpSource::read(uint8_t* buffer, size_t size) {
  while (position_ == end_) {
    if (!waitForDatagram()) {
      return 0;
    }
    receive();
  }
  const size_t count = std::min(size, end_ - position_);
  std::copy_n(datagram_.begin() + static_cast<std::ptrdiff_t>(position_), count, buffer);
  position_ += count;
  return count;
}

bool UdpSource::waitForDatagram() {
  return waitFor(live_, [this](std::chrono::milliseconds most) {
    pollfd socket = {socket_, POLLIN, 0};
    return poll(&socket, 1, static_cast<int>(most.count())) > 0;
  });
}

void UdpSource::failWhenDead(std::chrono::milliseconds silence) const {
  if (silence < std::chrono::seconds(live_.timeoutSeconds)) {
    return;
  }
  const std::string time = std::to_string(live_.timeoutSeconds) + " s";
  throw ToolError(payload_ == 0 ? noPacket(name_, time)
                                : "nothing more has come from " + name_ + " for " + time +
                                      ": has the stream ended?");
}

std::string UdpSource::explainNothing(const std::string& name, uint64_t packets) const {
  const std::string time = secondsText(Clock::now() - opened_);
  if (payload_ == 0) {
    return noPacket(name, time);
  }
  if (packets == 0) {
    return "what came from " + name + " in " + time + ", " + counted(payload_, "byte") +
           ", is no transport stream: no packets of 188, 192 or 204 bytes";
  }
  return counted(packets, "packet") + " came from " + name + " in " + time +
         ", but no complete table: give it longer, or see whether it carries PSI";
}

void UdpSource::receive() {
  const ssize_t size = recv(socket_, datagram_.data(), datagram_.size(), MSG_DONTWAIT);
  end_ = size < 0 ? 0 : static_cast<size_t>(size);  // taken away meanwhile: wait for the next
  position_ = rtpPayloadOffset(datagram_.data(), end_);
  payload_ += end_ - position_;
}

}  // namespace tevra::tools
