#pragma once

#include <string>
#include <string_view>

namespace tevra::tools {

/** What the name of a stream over UDP begins with. */
inline constexpr std::string_view kUdpScheme = "udp://";

/** An IPv4 address and a port. */
struct UdpAddress {
  std::string address;  ///< dotted decimal
  int port = 0;         ///< 1 to 65535
};

/** Reads "udp://ADDRESS:PORT"; raises ToolError when it is not one. */
[[nodiscard]] UdpAddress parseUdpAddress(const std::string& text);

}  // namespace tevra::tools
