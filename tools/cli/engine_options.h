#pragma once

#include <functional>
#include <string>

#include "records/control_service.h"
#include "tools/cli/command.h"

namespace tevra::tools {

/** The options that say what a stream is fed to: an engine of the run's own unless one of the
 * daemon's is given. */
struct EngineOptions {
  EndpointOptions daemon;  ///< isGiven: by --daemon, too
  std::string state;       ///< --state; empty: nothing is kept
};

/** --state, --daemon and those of addDaemonOptions, which write to `options`. */
void addEngineOptions(Command& command, EngineOptions& options);

/**
 * Runs `calls`, which feed `file`, with the engine that the options mean. Says on the error stream
 * what is replaced before a daemon is fed. Raises ArgumentError where the options contradict each
 * other, and what withDaemon and withPrivateEngine raise.
 */
void withEngine(const EngineOptions& options, const std::string& file, const Console& console,
                const std::function<void(thrift::in_module::im_SIControlSrvIf& engine)>& calls);

}  // namespace tevra::tools
