#include <memory>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/engine_options.h"
#include "tools/cli/request_options.h"
#include "tools/extract/stream_outputs.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/audio_warnings.h"
#include "tools/outputs/output_answers.h"
#include "tools/outputs/output_json.h"
#include "tools/outputs/output_text.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

struct AskOptions {
  EngineOptions engine;
  std::string file;  // empty: the daemon is asked, about what it has been fed
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

/** What the filter by language did not do. */
void printWarnings(const std::vector<OutputOptions>& outputs, const OutputAnswers& answers,
                   std::ostream& err) {
  for (const OutputOptions& output : outputs) {
    const auto answer = answers.find(output.resolvedGlobalSid());
    if (answer == answers.end()) {
      continue;
    }
    const PMT& pmt = answer->second.outputTables.dvbTables.pmt;
    for (const std::string& line : audioWarnings(output.resolvedAudio(), pmt, "output")) {
      err << "tornelctl: global service id " << answer->first << ": " << line << "\n";
    }
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

/** Outputs that were asked for, and what was answered. */
struct Asked {
  std::vector<OutputOptions> outputs;
  OutputAnswers answers;
};

Asked askDaemon(const AskOptions& options) {
  Asked asked;
  asked.outputs = outputsOf(draftsOf(options.request, OutputDefaults::kFixed));
  withDaemon(daemonAddress(options.engine.daemon),
             [&](thrift::in_module::im_SIControlSrvIf& daemon) {
               asked.answers = askFor(daemon, asked.outputs);
             });
  return asked;
}

Asked askAboutFile(const AskOptions& options, const Console& console) {
  const auto drafts = draftsOf(options.request, OutputDefaults::kFromStream);
  Asked asked;
  const auto calls = [&](thrift::in_module::im_SIControlSrvIf& engine) {
    const StreamFeed stream = StreamFeed::feedFile(options.file, engine);
    stream.printFaults(console.err);
    asked.outputs = settledOutputs(drafts, stream.inventory());
    enterServicesOf(asked.outputs, engine, stream.inventory(),
                    [&](const std::string& line) { console.err << line << "\n"; });
    asked.answers = askFor(engine, asked.outputs);
  };
  withEngine(options.engine, options.file, console, calls);
  return asked;
}

int output(const AskOptions& options, const Console& console) {
  if (options.file.empty() && !options.engine.state.empty()) {
    throw ArgumentError("--state is for --from: the daemon keeps its own");
  }
  const auto [outputs, answers] =
      options.file.empty() ? askDaemon(options) : askAboutFile(options, console);
  print(options, answers, console.out);
  printWarnings(outputs, answers, console.err);
  requireAll(outputs, answers);
  return kExitDone;
}

}  // namespace

void addOutputCommand(CommandLine& line) {
  const auto options = std::make_shared<AskOptions>();
  Command command = line.command(
      "output",
      "Print what outputs of a service are made of, PIDs and tables. The daemon is asked, which "
      "moves its versions: it takes every request for a real one. With --from it is left alone, "
      "unless --daemon is given");
  command
      .option("--from", options->file,
              "Transport stream to make the outputs of, - for standard input; what is not said of "
              "them is then as extract has it")
      .called("FILE")
      .checked(faultOfFile);
  addRequestOptions(command, options->request, OutputDefaults::kFixed);
  command.flag("--json", options->json, "Print the answer as JSON");
  addEngineOptions(command, options->engine);
  command.action([options](const Console& console) { return output(*options, console); });
}

}  // namespace tevra::tools
