#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/request_options.h"
#include "tools/outputs/output_answers.h"
#include "tools/outputs/output_json.h"
#include "tools/outputs/output_text.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

struct AskOptions {
  EndpointOptions endpoint;
  OutputCommandOptions commandLine;
  std::vector<OutputOptions> outputs;
  bool json = false;
};

void print(const AskOptions& options, const OutputAnswers& answers, std::ostream& out) {
  if (options.json) {
    out << outputJson(answers) << "\n";
    return;
  }
  for (const auto& [globalSid, configuration] : answers) {
    printOutput(out, globalSid, configuration);
  }
}

/** Without a service's PMT the daemon answers for none of its outputs. */
void requireAll(const std::vector<OutputOptions>& outputs, const OutputAnswers& answers) {
  const auto missing = unanswered(outputs, answers);
  if (!missing.empty()) {
    throw ToolError("the daemon has no PMT of " + servicesText(missing) +
                    ": feed it a stream that holds the service first");
  }
}

int output(const AskOptions& options, const Streams& streams) {
  OutputAnswers answers;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    answers = askFor(daemon, options.outputs);
  });
  print(options, answers, streams.out);
  requireAll(options.outputs, answers);
  return kExitDone;
}

}  // namespace

void addOutputCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<AskOptions>();
  CLI::App* command = app.add_subcommand(
      "output", "Ask the daemon what outputs of a service are made of: PIDs and tables");
  addOutputOptions(*command, options->commandLine, OutputDefaults::kFixed);
  command->add_flag("--json", options->json, "Print the answer as JSON");
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    options->outputs = outputsOf(finishOutputOptions(options->commandLine, OutputDefaults::kFixed));
    action = [options](const Streams& streams) { return output(*options, streams); };
  });
}

}  // namespace tevra::tools
