#include "tools/stream/udp_address.h"

#include <arpa/inet.h>

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int kLargestPort = 65535;
constexpr std::string_view kSchemeEnd = "://";

/** 0 where `text` is no port. */
int portFrom(const std::string& text) {
  if (text.empty() || text.size() > 5 ||
      text.find_first_not_of("0123456789") != std::string::npos) {
    return 0;
  }
  const int port = std::stoi(text);
  return port <= kLargestPort ? port : 0;
}

/** Where a route leads that the machine lacks. */
std::string routeQuestion(const sockaddr_in& address) {
  const uint32_t host = ntohl(address.sin_addr.s_addr);
  if (!IN_MULTICAST(host)) {
    return "is there a route to it?";
  }
  return "is there a route? ip route add " + std::to_string(host >> 24) +
         ".0.0.0/8 dev eth1, for one";
}

bool isScheme(const std::string& word) {
  const auto isPart = [](unsigned char c) { return std::isalnum(c) != 0 || c == '+' || c == '-'; };
  return !word.empty() && std::all_of(word.begin(), word.end(), isPart);
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

std::string explained(int error, const sockaddr_in& address) {
  std::string text = std::strerror(error);
  if (error == ENODEV || error == ENETUNREACH || error == EHOSTUNREACH) {
    text += ": " + routeQuestion(address);
  } else if (error == EADDRNOTAVAIL) {
    text += ": it is no address of this machine";
  }
  return text;
}

bool hasUnknownScheme(const std::string& name) {
  const size_t end = name.find(kSchemeEnd);
  if (end == std::string::npos || !isScheme(name.substr(0, end))) {
    return false;
  }
  const std::string scheme = name.substr(0, end + kSchemeEnd.size());
  std::error_code ignored;
  return scheme != kUdpScheme && scheme != kRtpScheme &&
         !std::filesystem::exists(std::filesystem::path(name).parent_path(), ignored);
}

}  // namespace tevra::tools
