#pragma once

#include <optional>
#include <string>

#include "tools/cli/command_line.h"
#include "tools/cli/daemon_connection.h"

namespace tevra::tools {

///@{
/** Declares one command with its options. */
void addFeedCommand(CommandLine& line);
void addOutputCommand(CommandLine& line);
void addExtractCommand(CommandLine& line);
void addListenCommand(CommandLine& line);
void addTablesCommand(CommandLine& line);
void addReportCommand(CommandLine& line);
void addResetCommand(CommandLine& line);
void addPingCommand(CommandLine& line);
void addStatusCommand(CommandLine& line);
///@}

/** The options that say where the daemon, or its stand-in for MainTask, is reached. */
struct EndpointOptions {
  std::string host = "127.0.0.1";  ///< name or address
  int set = 0;                     ///< index of the multiplex, 0 to 3
  std::optional<int> port;         ///< TCP; default: the set's own
  int timeoutSeconds = 30;         ///< 1 to 3600, as in DaemonAddress
  bool isGiven = false;            ///< whether host, set or port is on the command line
  bool isTimeoutGiven = false;     ///< whether the time to wait is

  /** `port`, or else the set's own, where `firstPort` is that of set 0. */
  [[nodiscard]] int resolvedPort(int firstPort) const { return port.value_or(firstPort + set); }
};

/** Port of the first set's MainTask; the others' follow. */
inline constexpr int kFirstNotificationPort = 9256;

/**
 * --host, --set and --port, whose help gives `firstPort` + set as the default. Parsing checks their
 * ranges and writes them to `options`, which must outlive `command`.
 */
void addEndpointOptions(Command& command, EndpointOptions& options, int firstPort);
/** The same and --timeout, for commands that call the daemon. */
void addDaemonOptions(Command& command, EndpointOptions& options);
/** The daemon that the options mean, by its control port. */
[[nodiscard]] DaemonAddress daemonAddress(const EndpointOptions& options);

}  // namespace tevra::tools
