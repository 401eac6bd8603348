#include "tools/cli/command.h"

namespace tevra::tools {
namespace {

constexpr int kLongestTimeout = 3600;

}  // namespace

void addEndpointOptions(CLI::App& command, EndpointOptions& options, int firstPort) {
  command.add_option("--host", options.host, "Address of the machine")->capture_default_str();
  command.add_option("--set", options.set, "Multiplex of the module, 0 to 3")
      ->check(CLI::Range(0, 3).description("0..3"))
      ->capture_default_str();
  command
      .add_option("--port", options.port,
                  "TCP port (default: " + std::to_string(firstPort) + " + set)")
      ->check(CLI::Range(1, 65535).description("1..65535"));
}

void addTimeoutOption(CLI::App& command, EndpointOptions& options) {
  command
      .add_option("--timeout", options.timeoutSeconds, "Seconds to wait for the daemon's answer")
      ->check(CLI::Range(1, kLongestTimeout).description("1..3600"))
      ->capture_default_str();
}

void addFileReadTwice(CLI::App& command, std::string& file) {
  command.add_option("FILE", file, "Transport stream, read twice")
      ->required()
      ->check([](const std::string& path) {
        return path == "-" ? "standard input cannot be read twice" : std::string();
      });
}

DaemonAddress daemonAddress(const EndpointOptions& options) {
  return {options.host, options.resolvedPort(kFirstControlPort), options.timeoutSeconds};
}

}  // namespace tevra::tools
