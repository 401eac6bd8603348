#pragma once

#include <netinet/in.h>

#include <string>
#include <string_view>

namespace tevra::tools {

///@{
/** What the name of a stream over UDP begins with: as it is, or behind the headers of RTP. */
inline constexpr std::string_view kUdpScheme = "udp://";
inline constexpr std::string_view kRtpScheme = "rtp://";
///@}

/** An IPv4 address and a port. */
struct UdpAddress {
  std::string address;                   ///< dotted decimal
  int port = 0;                          ///< 1 to 65535
  std::string_view scheme = kUdpScheme;  ///< kUdpScheme or kRtpScheme
};

/** Reads "udp://ADDRESS:PORT" or "rtp://ADDRESS:PORT"; raises ToolError when it is neither. */
[[nodiscard]] UdpAddress parseUdpAddress(const std::string& text);

/** What parseUdpAddress would read. */
[[nodiscard]] std::string urlOf(const UdpAddress& address);
/** For calls of the kernel. Precondition: parseUdpAddress has read it, or would. */
[[nodiscard]] sockaddr_in socketAddress(const UdpAddress& address);

/** What the kernel's `error` says about a socket for `address`, and what to do about it. */
[[nodiscard]] std::string explained(int error, const sockaddr_in& address);

/** Whether it is written as an address, but of a scheme unknown here; no path of a file is. */
[[nodiscard]] bool hasUnknownScheme(const std::string& name);

}  // namespace tevra::tools
