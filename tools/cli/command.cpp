#include "tools/cli/command.h"

namespace tevra::tools {

void addEndpointOptions(Command& command, EndpointOptions& options, int firstPort) {
  bool& isGiven = options.isGiven;
  command.option("--host", options.host, "Address of the machine").marks(isGiven);
  command.option("--set", options.set, "Multiplex of the module, 0 to 3")
      .range(0, 3)
      .marks(isGiven);
  command
      .option("--port", options.port, "TCP port (default: " + std::to_string(firstPort) + " + set)")
      .range(1, 65535)
      .marks(isGiven);
}

void addDaemonOptions(Command& command, EndpointOptions& options) {
  addEndpointOptions(command, options, kFirstControlPort);
  command.option("--timeout", options.timeoutSeconds, "Seconds to wait for the daemon's answer")
      .range(1, 3600)
      .marks(options.isTimeoutGiven);
}

DaemonAddress daemonAddress(const EndpointOptions& options) {
  return {options.host, options.resolvedPort(kFirstControlPort), options.timeoutSeconds};
}

}  // namespace tevra::tools
