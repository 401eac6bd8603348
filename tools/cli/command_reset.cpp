#include <memory>

#include "im_SIControlSrv.h"
#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/text/json_text.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

constexpr int32_t kResetCommand = 0;

struct ResetOptions {
  EndpointOptions endpoint;
  bool json = false;
};

int reset(const ResetOptions& options, const Console& console) {
  const DaemonAddress address = daemonAddress(options.endpoint);
  withDaemon(address, [](thrift::in_module::im_SIControlSrvIf& daemon) {
    if (!daemon.sendCmd(kResetCommand)) {
      throw ToolError("the daemon refused to reset: its log says why");
    }
  });
  if (options.json) {
    console.out << jsonLine({{"reset", true}, {"host", address.host}, {"port", address.port}})
                << "\n";
  } else {
    console.out << "The daemon has forgotten the tables it was fed; PIDs and versions go on.\n";
  }
  return kExitDone;
}

}  // namespace

void addResetCommand(CommandLine& line) {
  const auto options = std::make_shared<ResetOptions>();
  Command command = line.command(
      "reset",
      "Have the daemon forget the tables it was fed and its time offset; PIDs and versions stay");
  command.flag("--json", options->json, "Print the result as JSON");
  addDaemonOptions(command, options->endpoint);
  command.action([options](const Console& console) { return reset(*options, console); });
}

}  // namespace tevra::tools
