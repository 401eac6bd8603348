#include "tools/stream/udp_address.h"

#include <arpa/inet.h>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kLargestPort = 65535;

/** 0 where `text` is no port. */
int portFrom(const std::string& text) {
  if (text.empty() || text.size() > 5 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return 0;
  }
  const int port = std::stoi(text);
  return port <= kLargestPort ? port : 0;
}

}  // namespace

UdpAddress parseUdpAddress(const std::string& text) {
  UdpAddress result;
  if (text.compare(0, kRtpScheme.size(), kRtpScheme) == 0) {
    result.scheme = kRtpScheme;
  }
  const size_t start = result.scheme.size();
  const size_t colon = text.rfind(':');
  in_addr parsed{};
  if (colon != std::string::npos && colon > start && text.compare(0, start, result.scheme) == 0) {
    result.address = text.substr(start, colon - start);
    result.address.erase(0, result.address[0] == '@' ? 1 : 0);  // as some players write a group
    result.port = portFrom(text.substr(colon + 1));
  }
  if (result.port == 0 || inet_pton(AF_INET, result.address.c_str(), &parsed) != 1) {
    throw ToolError("'" + text + "' is not " + std::string(result.scheme) +
                    "ADDRESS:PORT with an IPv4 address");
  }
  return result;
}

std::string urlOf(const UdpAddress& address) {
  return std::string(address.scheme) + address.address + ":" + std::to_string(address.port);
}

sockaddr_in socketAddress(const UdpAddress& address) {
  sockaddr_in result{};
  result.sin_family = AF_INET;
  result.sin_port = htons(static_cast<uint16_t>(address.port));
  (void)inet_pton(AF_INET, address.address.c_str(), &result.sin_addr);  // has been parsed
  return result;
}

}  // namespace tevra::tools
