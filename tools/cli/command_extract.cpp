#include <algorithm>
#include <filesystem>
#include <memory>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/engine_options.h"
#include "tools/cli/request_options.h"
#include "tools/extract/extract_json.h"
#include "tools/extract/output_pattern.h"
#include "tools/extract/spts_files.h"
#include "tools/extract/stream_outputs.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/output_answers.h"
#include "tools/outputs/output_text.h"
#include "tools/stream/files.h"
#include "tools/text/decimals.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr const char* kStandardOutput = "-";

struct ExtractOptions {
  EngineOptions engine;
  RequestOptions request;
  std::vector<OutputDraft> drafts;
  std::string file;
  std::string outputFile;
  OutputPattern pattern;
  bool json = false;
  bool strict = false;
};

std::vector<SptsFile> ask(thrift::in_module::im_SIControlSrvIf& engine,
                          const StreamInventory& inventory,
                          const std::vector<OutputOptions>& outputs,
                          const std::vector<std::string>& files) {
  const OutputAnswers answers = askFor(engine, outputs);
  const auto missing = unanswered(outputs, answers);
  if (!missing.empty()) {
    throw ToolError("there is no output for " + servicesText(missing) +
                    " though the service has a PMT; the log of a daemon may say why");
  }
  std::vector<SptsFile> extractions;
  for (size_t index = 0; index < outputs.size(); ++index) {
    SptsFile& extraction = extractions.emplace_back();
    extraction.output = outputs[index];
    extraction.input = *inventory.pmt(outputs[index].inputSid);
    extraction.file = files[index];
    extraction.configuration = answers.at(outputs[index].resolvedGlobalSid());
  }
  return extractions;
}

void printFeed(const ExtractOptions& options, const StreamFeed& stream, std::ostream& out) {
  if (options.json) {
    return;
  }
  out << "input " << options.file << ": " << counted(stream.packets(), "packet") << ", "
      << counted(stream.tables().sent(), "table") << "\n";
  stream.inventory().print(out);
}

void printAnswers(const ExtractOptions& options, const std::vector<SptsFile>& outputs,
                  std::ostream& out) {
  if (options.json) {
    return;
  }
  for (const SptsFile& output : outputs) {
    printOutput(out, output.output.resolvedGlobalSid(), output.configuration);
  }
}

void printFile(const SptsFile& output, std::ostream& out) {
  out << "output " << output.file << ": " << counted(output.streamPackets, "packet")
      << " of streams, " << counted(output.tablePackets, "packet") << " of tables, "
      << (output.seconds ? fixedText(*output.seconds, 2) + " s" : "unknown duration") << "\n";
}

void printFiles(const std::vector<SptsFile>& outputs, const Console& console) {
  for (const SptsFile& output : outputs) {
    for (const std::string& warning : output.warnings) {
      console.err << "tornelctl: " << output.file << ": " << warning << "\n";
    }
    if (output.streamPackets != 0) {
      printFile(output, console.out);
    }
  }
}

void requireStreams(const std::vector<SptsFile>& outputs) {
  std::vector<std::string> files;
  for (const SptsFile& output : outputs) {
    if (output.streamPackets == 0) {
      files.push_back(output.file);
    }
  }
  if (!files.empty()) {
    throw ToolError(joined(files, ", ") + (files.size() == 1 ? " holds" : " hold") +
                    " tables alone: the input has no packet of the service's streams");
  }
}

void requireNoWarnings(const std::vector<SptsFile>& outputs) {
  size_t warnings = 0;
  for (const SptsFile& output : outputs) {
    warnings += output.warnings.size();
  }
  if (warnings != 0) {
    throw ToolError(counted(warnings, "warning") + ", which --strict does not let pass");
  }
}

int extract(const ExtractOptions& options, const Console& given) {
  // What is said must not get between the packets on standard output.
  const Console console = {options.outputFile == kStandardOutput ? given.err : given.out,
                           given.err};
  std::vector<SptsFile> outputs;
  uint64_t packets = 0;
  uint64_t tables = 0;
  const auto calls = [&](thrift::in_module::im_SIControlSrvIf& engine) {
    const StreamFeed stream = StreamFeed::feedFile(options.file, engine);
    packets = stream.packets();
    tables = stream.tables().sent();
    printFeed(options, stream, console.out);
    stream.printFaults(console.err);
    const auto asked = settledOutputs(options.drafts, stream.inventory());
    const auto files = filesFor(options.pattern, asked, options.file);
    enterServicesOf(asked, engine, stream.inventory(), console.err);
    outputs = ask(engine, stream.inventory(), asked, files);
  };
  withEngine(options.engine, options.file, console, calls);
  printAnswers(options, outputs, console.out);
  writeSptsFiles(options.file, outputs);
  if (options.json) {
    console.out << extractJson(options.file, packets, tables, outputs) << "\n";
  } else {
    printFiles(outputs, console);
  }
  requireStreams(outputs);
  if (options.strict) {
    requireNoWarnings(outputs);
  }
  return kExitDone;
}

/** Whether the names of the files can be told without the stream. */
bool isComplete(const ExtractOptions& options) {
  return std::all_of(options.drafts.begin(), options.drafts.end(), [&](const OutputDraft& draft) {
    return draft.service && (draft.output.name || !options.pattern.uses("name"));
  });
}

std::string folderOf(const std::string& path) {
  return std::filesystem::path(path).parent_path().string();
}

/** Finds out, as far as it can be, before the stream is read. */
void requireFiles(const ExtractOptions& options) {
  const bool isStandardOutput = options.outputFile == kStandardOutput;
  if (options.json && isStandardOutput) {
    throw UsageError("--json and -o - both want standard output: write to a file");
  }
  if (options.drafts.size() > 1 && !options.pattern.hasPlaceholder()) {
    throw UsageError("-o " + options.outputFile + " is one file for " +
                     counted(options.drafts.size(), "output") +
                     ": name one each with {gsid}, {sid} or {name}, as in -o out-{gsid}.ts");
  }
  std::vector<std::string> files;
  if (!options.pattern.hasPlaceholder()) {
    files = filesFor(options.pattern, {OutputOptions()}, options.file);
  } else if (isComplete(options)) {
    files = filesFor(options.pattern, outputsOf(options.drafts), options.file);
  } else if (folderOf(options.outputFile).find('{') == std::string::npos) {
    files = {options.outputFile};  // its folder is what counts
  }
  std::for_each(files.begin(), files.end(), requireWritable);
}

void finishOptions(ExtractOptions& options) {
  options.drafts = draftsOf(options.request, OutputDefaults::kFromStream);
  options.pattern = OutputPattern(options.outputFile);
  requireFiles(options);
}

}  // namespace

void addExtractCommand(CommandLine& line) {
  const auto options = std::make_shared<ExtractOptions>();
  Command command = line.command(
      "extract",
      "Make single-programme transport streams of services, as the daemon would have them made");
  addFileReadTwice(command, options->file);
  command
      .option("-o,--output", options->outputFile,
              "File to write; it is replaced. {gsid}, {sid}, {service} and {name} stand for those "
              "of the output")
      .required();
  addRequestOptions(command, options->request, OutputDefaults::kFromStream);
  command.flag("--json", options->json, "Print what was written as JSON");
  command.flag("--strict", options->strict, "Fail when there is a warning");
  addEngineOptions(command, options->engine);
  command.action([options](const Console& console) {
    finishOptions(*options);
    return extract(*options, console);
  });
}

}  // namespace tevra::tools
