#pragma once

#include <optional>
#include <string>

namespace tevra::tools {

/**
 * Whether a program of this machine takes connections to `port` of 127.0.0.1, by the kernel's
 * tables of sockets, so that nobody is connected to. Nothing where they cannot be read.
 */
[[nodiscard]] std::optional<bool> isListening(int port, const std::string& tables = "/proc/net");

}  // namespace tevra::tools
