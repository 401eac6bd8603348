#include "tools/cli/cli.h"

#include <exception>
#include <memory>
#include <string>

#include "tools/cli/command.h"
#include "tools/text/terminal.h"
#include "tools/text/tool_error.h"

namespace tevra::tools {
namespace {

int fail(const Console& console, const std::exception& error, int status) {
  printMessage(console.err, error.what());
  return status;
}

void addHelpCommand(CommandLine& line) {
  const auto name = std::make_shared<std::string>();
  Command command = line.command("help", "Explain a command, or list them all");
  command.option("COMMAND", *name, "The command to explain");
  command.action([&line, name](const Console& console) {
    console.out << line.help(*name, console.out);
    return kExitDone;
  });
}

}  // namespace

int runTornelctl(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  const Console console = {out, err};
  try {
    CommandLine line;
    addStatusCommand(line);
    addFeedCommand(line);
    addOutputCommand(line);
    addExtractCommand(line);
    addTablesCommand(line);
    addReportCommand(line);
    addListenCommand(line);
    addResetCommand(line);
    addPingCommand(line);
    addHelpCommand(line);
    const int status = line.run(argc, argv, console);
    if (!out.flush()) {
      throw ToolError("cannot write to standard output: is its disk full?");
    }
    return status;
  } catch (const UsageError& error) {
    return fail(console, error, kExitUsage);
  } catch (const std::exception& error) {
    return fail(console, error, kExitFailed);
  }
}

}  // namespace tevra::tools
