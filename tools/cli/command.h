#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/cli/daemon_connection.h"

namespace tevra::tools {

/** What a command writes to. */
struct Streams {
  std::ostream& out;  ///< results; standard output
  std::ostream& err;  ///< messages: faults, progress, what went wrong; standard error
};

/** The chosen command, ready to run: returns the exit status or raises ToolError. */
using Action = std::function<int(const Streams& streams)>;

///@{
/**
 * Declares one command with its options. Parsing sets `action`, which must outlive `app`, when the
 * command is chosen. It raises UsageError or CLI11's own errors when the arguments make no sense;
 * all else is the action's to find out.
 */
void addFeedCommand(CLI::App& app, Action& action);
void addOutputCommand(CLI::App& app, Action& action);
void addExtractCommand(CLI::App& app, Action& action);
void addListenCommand(CLI::App& app, Action& action);
void addTablesCommand(CLI::App& app, Action& action);
void addReportCommand(CLI::App& app, Action& action);
void addResetCommand(CLI::App& app, Action& action);
void addPingCommand(CLI::App& app, Action& action);
///@}

/** Comes last: it explains the commands that `app` has by then. */
void addHelpCommand(CLI::App& app, Action& action);

/** The options that say where the daemon, or its stand-in for MainTask, is reached. */
struct EndpointOptions {
  std::string host = "127.0.0.1";  ///< name or address
  int set = 0;                     ///< index of the multiplex, 0 to 3
  int port = 0;                    ///< TCP; 0: the set's own
  int timeoutSeconds = 30;         ///< 1 to 3600, as in DaemonAddress

  /** `port`, or else the set's own, where `firstPort` is that of set 0. */
  [[nodiscard]] int resolvedPort(int firstPort) const { return port != 0 ? port : firstPort + set; }
};

/** Port of the first set's MainTask; the others' follow. */
inline constexpr int kFirstNotificationPort = 9256;

/**
 * --host, --set and --port, whose help gives `firstPort` + set as the default. Parsing checks their
 * ranges and writes them to `options`, which must outlive `command`.
 */
void addEndpointOptions(CLI::App& command, EndpointOptions& options, int firstPort);
/** --timeout, likewise, for commands that call the daemon. */
void addTimeoutOption(CLI::App& command, EndpointOptions& options);
/** The required argument FILE of a command that reads it twice: "-" is refused. */
void addFileReadTwice(CLI::App& command, std::string& file);
/** The daemon that the options mean, by its control port. */
[[nodiscard]] DaemonAddress daemonAddress(const EndpointOptions& options);

}  // namespace tevra::tools
