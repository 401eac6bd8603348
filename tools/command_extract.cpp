#include <iomanip>
#include <map>

#include "tools/cli.h"
#include "tools/command.h"
#include "tools/files.h"
#include "tools/output_command_options.h"
#include "tools/output_text.h"
#include "tools/spts_writer.h"
#include "tools/stream_feed.h"
#include "tools/text_table.h"
#include "tools/tool_error.h"
#include "tools/ts_packet_reader.h"

namespace tevra::tools {
namespace {

struct ExtractOptions {
  EndpointOptions endpoint;
  OutputCommandOptions commandLine;
  OutputOptions output;
  std::string file;
  std::string outputFile;
};

/** What the user did not say is as in the input. */
OutputOptions withStreamDefaults(const ExtractOptions& options, const StreamInventory& inventory) {
  OutputOptions output = options.output;
  if (!options.commandLine.service) {
    const std::optional<int> first = inventory.firstServiceWithPmt();
    if (!first) {
      throw ToolError("no service of this stream has a PMT");
    }
    output.inputSid = *first;
  }
  const std::string name = inventory.service(output.inputSid).name;
  if (!output.name && !name.empty()) {
    output.name = name;
  }
  if (!output.transportStreamId) {
    output.transportStreamId = inventory.transportStreamId();
  }
  if (!output.originalNetworkId) {
    output.originalNetworkId = inventory.originalNetworkId();
  }
  return output;
}

void requireService(int32_t serviceId, const StreamInventory& inventory) {
  if (!inventory.service(serviceId).hasPmt) {
    throw ToolError(
        "service " + std::to_string(serviceId) +
        " has no PMT in this stream; services that have: " + inventory.servicesWithPmt());
  }
}

SPTSConfiguration ask(thrift::in_module::im_SIControlSrvIf& daemon, const OutputOptions& output) {
  std::map<int32_t, SPTSConfiguration> answer;
  daemon.getSrvOutputData(answer, makeRequest(output));
  const auto entry = answer.find(output.resolvedGlobalSid());
  if (entry == answer.end()) {
    throw ToolError("the daemon gives no output for service " + std::to_string(output.inputSid) +
                    " though it was fed the service's PMT; its log may say why");
  }
  return entry->second;
}

/** Feeds the stream, prints what it is and asks for the output, all over one connection. */
SPTSConfiguration feedAndAsk(const ExtractOptions& options, const Streams& streams) {
  SPTSConfiguration configuration;
  withDaemon(daemonAddress(options.endpoint), [&](thrift::in_module::im_SIControlSrvIf& daemon) {
    const StreamFeed stream(options.file, daemon);
    streams.out << "input " << options.file << ": " << counted(stream.packets(), "packet") << ", "
                << counted(stream.tables().sent(), "table") << " sent to the daemon\n";
    stream.inventory().print(streams.out);
    stream.printFaults(streams.err);
    const OutputOptions output = withStreamDefaults(options, stream.inventory());
    requireService(output.inputSid, stream.inventory());
    configuration = ask(daemon, output);
    printOutput(streams.out, output.resolvedGlobalSid(), configuration);
  });
  return configuration;
}

void write(const ExtractOptions& options, const SPTSConfiguration& configuration,
           const Streams& streams) {
  InputFile input(options.file);
  OutputFile file(options.outputFile);
  SptsWriter writer(configuration,
                    [&file](const TsPacket& packet) { file.write(packet.data(), kTsPacketSize); });
  for (const std::string& warning : writer.warnings()) {
    streams.err << "tornelctl: " << warning << "\n";
  }
  TsPacketReader reader([&](uint8_t* buffer, size_t size) { return input.read(buffer, size); });
  TsPacket packet;
  while (reader.next(packet)) {
    writer.push(packet);
  }
  writer.finish();
  file.close();
  if (writer.streamPackets() == 0) {
    throw ToolError(options.outputFile +
                    " holds tables alone: the input has no packet of the service's streams");
  }
  streams.out << "output " << options.outputFile << ": "
              << counted(writer.streamPackets(), "packet") << " of streams, "
              << counted(writer.tablePackets(), "packet") << " of tables, " << std::fixed
              << std::setprecision(2)
              << static_cast<double>(writer.duration()) / static_cast<double>(kSystemClock)
              << " s\n";
}

int extract(const ExtractOptions& options, const Streams& streams) {
  // What is said must not get between the packets on standard output.
  const Streams report = {options.outputFile == "-" ? streams.err : streams.out, streams.err};
  write(options, feedAndAsk(options, report), report);
  return kExitDone;
}

}  // namespace

void addExtractCommand(CLI::App& app, Action& action) {
  const auto options = std::make_shared<ExtractOptions>();
  CLI::App* command = app.add_subcommand(
      "extract",
      "Make a single-programme transport stream of one service: feed the stream, ask the "
      "daemon for the output, write it");
  command->add_option("FILE", options->file, "Transport stream, read twice")
      ->required()
      ->check([](const std::string& path) {
        return path == "-" ? "standard input cannot be read twice" : std::string();
      });
  command->add_option("-o,--output", options->outputFile, "File to write; it is replaced")
      ->required();
  addOutputOptions(*command, options->commandLine, OutputDefaults::kFromStream);
  addEndpointOptions(*command, options->endpoint, kFirstControlPort);
  addTimeoutOption(*command, options->endpoint);
  command->callback([&action, options] {
    options->output = finishOutputOptions(options->commandLine);
    if (isSameFile(options->file, options->outputFile)) {
      throw CLI::ValidationError("output and input are the same file, " + options->file);
    }
    action = [options](const Streams& streams) { return extract(*options, streams); };
  });
}

}  // namespace tevra::tools
