#include "tools/cli/command.h"

#include "tools/stream/byte_source.h"

namespace tevra::tools {
namespace {

std::string faultOfFileReadTwice(const std::string& path) {
  if (path == "-") {
    return "standard input cannot be read twice: save it to a file first";
  }
  return isReadOnce(path) && !isLiveSource(path)
             ? "'" + path +
                   "' is a pipe or device, which cannot be read twice: copy it to a file first"
             : faultOfFile(path);
}

}  // namespace

std::string faultOfFile(const std::string& path) {
  if (path.empty()) {
    return "a file is missing";
  }
  return isLiveSource(path)
             ? "'" + path + "' is a live stream, which feed alone takes: record it to a file first"
             : "";
}

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

void addFile(Command& command, std::string& file) {
  command.option("FILE", file, "Transport stream; - is standard input")
      .required()
      .checked(faultOfFile);
}

void addFileReadTwice(Command& command, std::string& file) {
  command.option("FILE", file, "Transport stream, read twice")
      .required()
      .checked(faultOfFileReadTwice);
}

DaemonAddress daemonAddress(const EndpointOptions& options) {
  return {options.host, options.resolvedPort(kFirstControlPort), options.timeoutSeconds};
}

}  // namespace tevra::tools
