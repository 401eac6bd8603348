#include <memory>

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
  RequestOptions request;
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

int output(const AskOptions& options, const Console& console) {
  const auto outputs = outputsOf(draftsOf(options.request, OutputDefaults::kFixed));
  OutputAnswers answers;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    answers = askFor(daemon, outputs);
  });
  print(options, answers, console.out);
  requireAll(outputs, answers);
  return kExitDone;
}

}  // namespace

void addOutputCommand(CommandLine& line) {
  const auto options = std::make_shared<AskOptions>();
  Command command = line.command(
      "output", "Ask the daemon what outputs of a service are made of: PIDs and tables");
  addRequestOptions(command, options->request, OutputDefaults::kFixed);
  command.flag("--json", options->json, "Print the answer as JSON");
  addDaemonOptions(command, options->endpoint);
  command.action([options](const Console& console) { return output(*options, console); });
}

}  // namespace tevra::tools
