#include <map>

#include "tools/cli.h"
#include "tools/command.h"
#include "tools/output_command_options.h"
#include "tools/output_json.h"
#include "tools/output_text.h"
#include "tools/tool_error.h"

namespace tevra::tools {
namespace {

struct AskOptions {
  EndpointOptions endpoint;
  OutputCommandOptions commandLine;
  OutputOptions output;
  bool json = false;
};

int output(const AskOptions& options, const Streams& streams) {
  std::map<int32_t, SPTSConfiguration> answer;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    daemon.getSrvOutputData(answer, makeRequest(options.output));
  });
  if (options.json) {
    streams.out << outputJson(answer) << "\n";
  }
  if (answer.empty()) {
    throw ToolError("the daemon has no PMT of service " + std::to_string(options.output.inputSid) +
                    ": feed it a stream that holds the service first");
  }
  if (!options.json) {
    for (const auto& [globalSid, configuration] : answer) {
      printOutput(streams.out, globalSid, configuration);
    }
  }
  return kExitDone;
}

}  // namespace

void addOutputCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<AskOptions>();
  CLI::App* command = app.add_subcommand(
      "output", "Ask the daemon what the output of one service is made of: PIDs and tables");
  addOutputOptions(*command, options->commandLine, OutputDefaults::kFixed);
  command->add_flag("--json", options->json, "Print the answer as JSON");
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    options->output = finishOutputOptions(options->commandLine);
    action = [options](const Streams& streams) { return output(*options, streams); };
  });
}

}  // namespace tevra::tools
