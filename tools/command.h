#pragma once

#include <functional>
#include <memory>
#include <ostream>
#include <string>

#include <CLI/CLI.hpp>

#include "tools/daemon_connection.h"

namespace tevra::tools {

/** What a command writes to. */
struct Streams {
  std::ostream& out;
  std::ostream& err;
};

/** The chosen command, ready to run: returns the exit status or raises ToolError. */
using Action = std::function<int(const Streams& streams)>;

// Each declares one command with its options; `action` is set when the command is chosen.

void addFeedCommand(CLI::App& app, Action& action);
void addOutputCommand(CLI::App& app, Action& action);
void addExtractCommand(CLI::App& app, Action& action);
void addListenCommand(CLI::App& app, Action& action);
void addTablesCommand(CLI::App& app, Action& action);
void addReportCommand(CLI::App& app, Action& action);
void addResetCommand(CLI::App& app, Action& action);
void addPingCommand(CLI::App& app, Action& action);

/** Comes last: it explains the commands that `app` has by then. */
void addHelpCommand(CLI::App& app, Action& action);

/** The options that say where the daemon, or its stand-in for MainTask, is reached. */
struct EndpointOptions {
  std::string host = "127.0.0.1";
  int set = 0;
  int port = 0;  // 0: the set's own
  int timeoutSeconds = 30;

  [[nodiscard]] int resolvedPort(int firstPort) const { return port != 0 ? port : firstPort + set; }
};

/** Port of the first set's MainTask; the others' follow. */
inline constexpr int kFirstNotificationPort = 9256;

void addEndpointOptions(CLI::App& command, EndpointOptions& options, int firstPort);
void addTimeoutOption(CLI::App& command, EndpointOptions& options);
[[nodiscard]] DaemonAddress daemonAddress(const EndpointOptions& options);

}  // namespace tevra::tools
