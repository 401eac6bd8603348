#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/engine_options.h"
#include "tools/cli/source_options.h"
#include "tools/report/facts/report_collector.h"
#include "tools/report/page/check_words.h"
#include "tools/report/page/report_json.h"
#include "tools/report/page/report_page.h"
#include "tools/stream/files.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

struct ReportOptions {
  EngineOptions engine;
  SourceOptions source;
  std::string outputFile;
  std::string title;
  bool json = false;
  bool check = false;
  int pidPeriod = report::kPidPeriod;
};

/** Written only when all is known, and as a whole, so that a failure leaves the former page. */
void write(const ReportOptions& options, const report::Report& report) {
  replaceFile(options.outputFile,
              options.json ? report::reportJson(report) + "\n" : report::reportPage(report));
}

/** What the checks make no use of. */
void requireCheckAlone(const ReportOptions& options) {
  const EndpointOptions& daemon = options.engine.daemon;
  const std::vector<std::pair<std::string, bool>> useless = {
      {"--output", !options.outputFile.empty()},
      {"--title", !options.title.empty()},
      {"--state", !options.engine.state.empty()},
      {"--daemon, --host, --set and --port", daemon.isGiven},
      {"--timeout", daemon.isTimeoutGiven}};
  for (const auto& [name, isGiven] : useless) {
    if (isGiven) {
      throw ArgumentError("--check writes no page and needs no engine: leave " + name + " out");
    }
  }
}

/** As far as it can be told before the stream is read. */
void requireOutput(const ReportOptions& options) {
  if (options.check) {
    requireCheckAlone(options);
    return;
  }
  if (options.outputFile.empty()) {
    throw ArgumentError("--output is required");
  }
  if (isSameFile(options.source.name, options.outputFile)) {
    throw ArgumentError("output and input are the same file, " + options.source.name);
  }
  requireWritable(options.outputFile);
}

/** Needs neither an output file nor a daemon. */
int check(const ReportOptions& options, ByteSource& source, const Console& console) {
  const report::Verdict verdict =
      report::checkStream(source, options.source.name, options.pidPeriod);
  for (const std::string& fault : source.faults()) {
    console.err << fault << "\n";
  }
  if (options.json) {
    console.out << report::verdictJson(verdict) << "\n";
  } else {
    report::printVerdict(verdict, console.out);
  }
  return report::firstPriorityFailed(verdict.checks) ? kExitFailed : kExitDone;
}

int makeReport(const ReportOptions& options, ByteSource& source, const Console& console) {
  const std::string& name = options.source.name;
  report::Collected collected;
  const auto calls = [&](thrift::in_module::im_SIControlSrvIf& engine) {
    collected = report::collectReport(source, name, engine, options.pidPeriod);
  };
  withEngine(options.engine, name, console, calls);
  collected.report.title = options.title;
  write(options, collected.report);
  for (const std::string& fault : collected.report.faultLines()) {
    console.err << fault << "\n";
  }
  if (options.outputFile != "-") {
    console.out << "report " << options.outputFile << ": "
                << counted(collected.report.services.size(), "service") << ", "
                << counted(collected.report.tablesSent, "table") << "\n";
  }
  return collected.refused == 0 ? kExitDone : kExitFailed;
}

int run(const ReportOptions& options, const Console& console) {
  requireOutput(options);
  int status = kExitDone;
  withSource(options.source, options.engine.daemon.timeoutSeconds, [&](ByteSource& source) {
    tellHowItEnds(options.source, console.err);
    status = options.check ? check(options, source, console) : makeReport(options, source, console);
  });
  return status;
}

}  // namespace

void addReportCommand(CommandLine& line) {
  const auto options = std::make_shared<ReportOptions>();
  Command command = line.command(
      "report",
      "Draw the multiplex on an HTML page, with the output that the daemon would make of every "
      "service");
  addSource(command, options->source);
  command.option("-o,--output", options->outputFile,
                 "File to write; it is replaced. - is standard output");
  command.option("--title", options->title, "Heading of the page (default: the file's name)");
  command.flag("--json", options->json, "Write the facts as JSON instead");
  command.flag(
      "--check", options->check,
      "Print the checks of ETSI TR 101 290 alone; fails when one of the first priority does");
  command
      .option("--pid-period", options->pidPeriod,
              "Seconds for which video and audio may stay away (PID_error)")
      .range(1, 3600);
  addEngineOptions(command, options->engine);
  command.action([options](const Console& console) { return run(*options, console); });
}

}  // namespace tevra::tools
