#include <algorithm>
#include <memory>
#include <optional>
#include <vector>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"
#include "tools/cli/source_options.h"
#include "tools/si/stream_faults.h"
#include "tools/tables/table_fields.h"
#include "tools/tables/table_printer.h"
#include "tools/text/standard_streams.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr int kPatience = 30;  // seconds

struct TablesOptions {
  SourceOptions source;
  std::vector<std::string> names;  // none: all
  std::optional<int> service;
  bool json = false;
};

bool isWanted(const TablesOptions& options, const SiTable& table) {
  const bool isNamed = options.names.empty() ||
                       std::find(options.names.begin(), options.names.end(), tableName(table)) !=
                           options.names.end();
  return isNamed && (!options.service || serviceOf(table) == *options.service);
}

/** Ends with an error where nothing was printed, so that scripts notice. */
void requireTables(const std::string& name, const ByteSource& source, uint64_t packets,
                   size_t tables, size_t printed) {
  if (tables == 0) {
    throw ToolError(source.explainNothing(name, packets));
  }
  if (printed == 0) {
    throw ToolError(sourceName(name) + " holds " + counted(tables, "table") +
                    ", but none that was asked for; leave out --table and --service to see all");
  }
}

void printTables(const TablesOptions& options, ByteSource& source, const Console& console) {
  TsPacketReader reader(source);
  TablePrinter printer(console.out, options.json);
  size_t tables = 0;
  TableDemux demux([&](const SiTable& table, size_t /*sections*/) {
    ++tables;
    if (isWanted(options, table)) {
      printer.print(table);
    }
  });
  TsPacket packet;
  while (reader.next(packet) && console.out.good()) {
    demux.push(packet);
  }
  printer.finish();
  for (const std::string& fault : streamFaults(source, reader, demux, "not shown")) {
    console.err << fault << "\n";
  }
  if (console.out.good()) {
    requireTables(options.source.name, source, reader.packets(), tables, printer.printed());
  }
}

}  // namespace

void addTablesCommand(CommandLine& line) {
  const auto options = std::make_shared<TablesOptions>();
  Command command = line.command(
      "tables", "Print the tables of a transport stream, each new version once, in stream order");
  addSource(command, options->source);
  const std::vector<std::string> names = {"PAT", "CAT", "PMT", "NIT", "SDT", "BAT", "EIT", "TOT"};
  command
      .list("--table", options->names, names,
            "Print only these: " + joined(names, ", ") + "; may be given again")
      .called("NAME");
  command
      .option("--service", options->service,
              "Print only the PMTs and EITs of the service with this id")
      .range(0, 65535);
  command.flag("--json", options->json, "Print one JSON array");
  command.action([options](const Console& console) {
    withSource(options->source, kPatience,
               [&](ByteSource& source) { printTables(*options, source, console); });
    return kExitDone;
  });
}

}  // namespace tevra::tools
