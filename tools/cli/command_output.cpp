#include <memory>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/engine_options.h"
#include "tools/cli/request_options.h"
#include "tools/cli/source_options.h"
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
  SourceOptions from;  // no name: the daemon is asked, about what it has been fed
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

/** Shows what was answered when these outputs were asked for. */
void show(const AskOptions& options, const std::vector<OutputOptions>& outputs,
          const OutputAnswers& answers, const Console& console) {
  print(options, answers, console.out);
  printWarnings(outputs, answers, console.err);
  requireAll(outputs, answers);
}

void askDaemon(const AskOptions& options, const Console& console) {
  if (!options.engine.state.empty()) {
    throw ArgumentError("--state is for --from: the daemon keeps its own");
  }
  if (options.from.seconds) {
    throw ArgumentError("--seconds is for --from: the daemon is asked at once");
  }
  const auto outputs = outputsOf(draftsOf(options.request, OutputDefaults::kFixed));
  OutputAnswers answers;
  withDaemon(
      daemonAddress(options.engine.daemon),
      [&](thrift::in_module::im_SIControlSrvIf& daemon) { answers = askFor(daemon, outputs); });
  show(options, outputs, answers, console);
}

void askAboutStream(const AskOptions& options, ByteSource& source, const Console& console) {
  const std::string& name = options.from.name;
  const auto drafts = draftsOf(options.request, OutputDefaults::kFromStream);
  std::vector<OutputOptions> outputs;
  OutputAnswers answers;
  withEngine(options.engine, name, console, [&](thrift::in_module::im_SIControlSrvIf& engine) {
    const StreamFeed stream = StreamFeed::feed(source, name, engine);
    stream.printFaults(console.err);
    outputs = settledOutputs(drafts, stream.inventory());
    enterServicesOf(outputs, engine, stream.inventory(),
                    [&](const std::string& line) { console.err << line << "\n"; });
    answers = askFor(engine, outputs);
  });
  show(options, outputs, answers, console);
}

int output(const AskOptions& options, const Console& console) {
  if (options.from.name.empty()) {
    askDaemon(options, console);
    return kExitDone;
  }
  withSource(options.from, options.engine.daemon.timeoutSeconds, [&](ByteSource& source) {
    tellHowItEnds(options.from, console.err);
    askAboutStream(options, source, console);
  });
  return kExitDone;
}

}  // namespace

void addOutputCommand(CommandLine& line) {
  const auto options = std::make_shared<AskOptions>();
  Command command = line.command(
      "output",
      "Print what outputs of a service are made of, PIDs and tables. The daemon is asked, which "
      "moves its versions: it takes every request for a real one. With --from the outputs are made "
      "of a stream, as extract would make them, and the daemon is left alone, unless --daemon is "
      "given");
  addSource(command, options->from, "--from");
  addRequestOptions(command, options->request, OutputDefaults::kFixed);
  command.flag("--json", options->json, "Print the answer as JSON");
  addEngineOptions(command, options->engine);
  command.action([options](const Console& console) { return output(*options, console); });
}

}  // namespace tevra::tools
