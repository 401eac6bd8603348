#include "tools/cli/engine_options.h"

#include "tools/engine/private_engine.h"
#include "tools/text/standard_streams.h"

namespace tevra::tools {
namespace {

void tellWhatWillBeReplaced(const DaemonAddress& address, const std::string& file,
                            const Console& console) {
  console.err << "tornelctl: what " << sourceName(file)
              << " holds will replace the tables of the daemon at " << nameOf(address)
              << "; if its transport stream was another, its PIDs begin anew\n"
              << std::flush;
}

}  // namespace

void addEngineOptions(Command& command, EngineOptions& options) {
  command
      .option("--state", options.state,
              "Directory to keep PIDs and versions in from run to run; without it every run begins "
              "anew")
      .called("DIR")
      .checked([](const std::string& directory) {
        return directory.empty() ? "a directory is missing" : std::string();
      });
  command.flag("--daemon", options.daemon.isGiven,
               "Feed FILE to the daemon, whose tables it replaces, and not to an engine of this "
               "run's own; so do --host, --set and --port");
  addDaemonOptions(command, options.daemon);
}

void withEngine(const EngineOptions& options, const std::string& file, const Console& console,
                const std::function<void(thrift::in_module::im_SIControlSrvIf& engine)>& calls) {
  if (!options.daemon.isGiven) {
    if (options.daemon.isTimeoutGiven) {
      throw ArgumentError("--timeout is for a daemon: add --daemon");
    }
    withPrivateEngine(options.state, calls);
    return;
  }
  if (!options.state.empty()) {
    throw ArgumentError("--state is not for a daemon, which keeps its own");
  }
  const DaemonAddress address = daemonAddress(options.daemon);
  withDaemon(address, [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    tellWhatWillBeReplaced(address, file, console);
    calls(daemon);
  });
}

}  // namespace tevra::tools
