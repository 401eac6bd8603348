#include "tools/cli.h"
#include "tools/command.h"
#include "tools/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int32_t kResetCommand = 0;

int reset(const EndpointOptions& options, const Streams& streams) {
  withDaemon(daemonAddress(options), [](thrift::in_module::im_SIControlSrvIf& daemon) {
    if (!daemon.sendCmd(kResetCommand)) {
      throw ToolError("the daemon refused to reset: its log says why");
    }
  });
  streams.out << "The daemon has forgotten the tables it was fed; PIDs and versions go on.\n";
  return kExitDone;
}

}  // namespace

void addResetCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<EndpointOptions>();
  CLI::App* command = app.add_subcommand(
      "reset",
      "Have the daemon forget the tables it was fed and its time offset; PIDs and versions stay");
  addEndpointOptions(*command, *options, kFirstControlPort);
  addTimeoutOption(*command, *options);
  command->callback([&action, options] {
    action = [options](const Streams& streams) { return reset(*options, streams); };
  });
}

}  // namespace tevra::tools
