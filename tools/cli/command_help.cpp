#include <memory>

#include "tools/cli/cli.h"
#include "tools/cli/command.h"

namespace tevra::tools {

void addHelpCommand(CommandLine& line) {
  const auto name = std::make_shared<std::string>();
  Command command = line.command("help", "Explain a command, or list them all");
  command.option("COMMAND", *name, "The command to explain");
  command.action([&line, name](const Console& console) {
    console.out << line.help(*name);
    return kExitDone;
  });
}

}  // namespace tevra::tools
