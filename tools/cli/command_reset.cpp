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

void printJson(std::ostream& out, const DaemonAddress& address) {
  Json json;
  json["reset"] = true;
  json["host"] = address.host;
  json["port"] = address.port;
  out << jsonLine(json) << "\n";
}

int reset(const ResetOptions& options, const Streams& streams) {
  const DaemonAddress address = daemonAddress(options.endpoint);
  withDaemon(address, [](thrift::in_module::im_SIControlSrvIf& daemon) {
    if (!daemon.sendCmd(kResetCommand)) {
      throw ToolError("the daemon refused to reset: its log says why");
    }
  });
  if (options.json) {
    printJson(streams.out, address);
  } else {
    streams.out << "The daemon has forgotten the tables it was fed; PIDs and versions go on.\n";
  }
  return kExitDone;
}

}  // namespace

void addResetCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<ResetOptions>();
  CLI::App* command = app.add_subcommand(
      "reset",
      "Have the daemon forget the tables it was fed and its time offset; PIDs and versions stay");
  command->add_flag("--json", options->json, "Print the result as JSON");
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    action = [options](const Streams& streams) { return reset(*options, streams); };
  });
}

}  // namespace tevra::tools
