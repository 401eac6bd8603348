#include <algorithm>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/engine_options.h"
#include "tools/cli/request_options.h"
#include "tools/cli/source_options.h"
#include "tools/extract/extract_json.h"
#include "tools/extract/live_extract.h"
#include "tools/extract/output_pattern.h"
#include "tools/extract/spts_files.h"
#include "tools/extract/stream_outputs.h"
#include "tools/feed/stream_feed.h"
#include "tools/outputs/output_text.h"
#include "tools/stream/packet_sink.h"
#include "tools/text/decimals.h"
#include "tools/text/standard_streams.h"
#include "tools/text/time_stamp.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr const char* kStandardOutput = "-";

struct ExtractOptions {
  EngineOptions engine;
  RequestOptions request;
  std::vector<OutputDraft> drafts;
  SourceOptions source;
  std::string outputFile;
  OutputPattern pattern;
  bool json = false;
  bool strict = false;
};

/** What was read, and what became of it. */
struct Extraction {
  uint64_t packets = 0;
  uint64_t tables = 0;
  std::vector<SptsFile> outputs;
};

void printInput(const ExtractOptions& options, const StreamFeed& stream, std::ostream& out) {
  if (!options.json) {
    out << "input " << sourceName(options.source.name) << ": "
        << counted(stream.packets(), "packet") << ", " << counted(stream.tables().sent(), "table")
        << "\n";
  }
}

void printServices(const ExtractOptions& options, const StreamInventory& inventory,
                   std::ostream& out) {
  if (!options.json) {
    inventory.print(out);
  }
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
  out << "output " << sinkName(output.file) << ": " << counted(output.streamPackets, "packet")
      << " of streams, " << counted(output.tablePackets, "packet") << " of tables, "
      << (output.seconds ? fixedText(*output.seconds, 2) + " s" : "unknown duration") << "\n";
}

void printFiles(const std::vector<SptsFile>& outputs, const Console& console) {
  for (const SptsFile& output : outputs) {
    for (const std::string& warning : output.warnings) {
      console.err << "tornelctl: " << sinkName(output.file) << ": " << warning << "\n";
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
      files.push_back(sinkName(output.file));
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

/** The file is read twice: tables first. */
Extraction extractFile(const ExtractOptions& options, const Console& console) {
  const std::string& file = options.source.name;
  Extraction extraction;
  const auto calls = [&](thrift::in_module::im_SIControlSrvIf& engine) {
    const StreamFeed stream = StreamFeed::feed(*openSource(file), file, engine);
    extraction.packets = stream.packets();
    extraction.tables = stream.tables().sent();
    printInput(options, stream, console.out);
    printServices(options, stream.inventory(), console.out);
    stream.printFaults(console.err);
    const auto asked = settledOutputs(options.drafts, stream.inventory());
    const auto files = filesFor(options.pattern, asked, file);
    extraction.outputs = askForFiles(asked, engine, stream.inventory(),
                                     [&](const std::string& line) { console.err << line << "\n"; });
    for (size_t index = 0; index < files.size(); ++index) {
      extraction.outputs[index].file = files[index];
    }
  };
  withEngine(options.engine, file, console, calls);
  printAnswers(options, extraction.outputs, console.out);
  writeSptsFiles(file, extraction.outputs);
  return extraction;
}

/** The source is read once, until it ends or is told to. */
Extraction extractLive(const ExtractOptions& options, const Console& console) {
  Extraction extraction;
  LiveEvents events;
  events.begun = [&](const StreamInventory& inventory, const std::vector<SptsFile>& outputs) {
    printServices(options, inventory, console.out);
    printAnswers(options, outputs, console.out);
    console.out.flush();
  };
  events.tell = [&](const std::string& line) {
    console.err << timeStamp(std::chrono::system_clock::now(), Zone::kLocal) << " " << line << "\n"
                << std::flush;
  };
  OnSilence silent;
  const auto calls = [&](ByteSource& source, thrift::in_module::im_SIControlSrvIf& engine) {
    LiveExtract extract({sourceName(options.source.name), options.drafts, options.pattern}, engine,
                        events);
    silent = [&](std::chrono::milliseconds silence) { extract.silent(silence); };
    const StreamFeed stream = extract.run(source);
    extraction = {stream.packets(), stream.tables().sent(), extract.outputs()};
    printInput(options, stream, console.out);
    stream.printFaults(console.err);
  };
  const auto onSilence = [&](std::chrono::milliseconds silence) { silent(silence); };
  withSource(options.source, onSilence, [&](ByteSource& source) {
    withEngine(options.engine, options.source.name, console,
               [&](thrift::in_module::im_SIControlSrvIf& engine) { calls(source, engine); });
  });
  return extraction;
}

int extract(const ExtractOptions& options, const Console& given) {
  // What is said must not get between the packets on standard output.
  const Console console = {options.outputFile == kStandardOutput ? given.err : given.out,
                           given.err};
  const Extraction done = isReadOnce(options.source.name) ? extractLive(options, console)
                                                          : extractFile(options, console);
  if (options.json) {
    console.out << extractJson(options.source.name, done.packets, done.tables, done.outputs)
                << "\n";
  } else {
    printFiles(done.outputs, console);
  }
  requireStreams(done.outputs);
  if (options.strict) {
    requireNoWarnings(done.outputs);
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
    files = filesFor(options.pattern, {OutputOptions()}, options.source.name);
  } else if (isComplete(options)) {
    files = filesFor(options.pattern, outputsOf(options.drafts), options.source.name);
  } else if (!isLiveSink(options.outputFile) &&
             folderOf(options.outputFile).find('{') == std::string::npos) {
    files = {options.outputFile};  // its folder is what counts
  }
  std::for_each(files.begin(), files.end(), requireSink);
}

void finishOptions(ExtractOptions& options) {
  if (options.source.seconds && !isReadOnce(options.source.name)) {
    throw ArgumentError("--seconds is for a live source: " + options.source.name +
                        " is read to its end");
  }
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
  addSource(command, options->source);
  command
      .option("-o,--output", options->outputFile,
              "File to write; it is replaced. Or udp://ADDRESS:PORT to send to, in real time. "
              "{gsid}, {sid}, {service} and {name} stand for those of the output")
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
