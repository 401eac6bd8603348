#include "tools/cli.h"
#include "tools/command.h"

namespace tevra::tools {
namespace {

/** The command of that name, `app` itself for none; null where there is no such command. */
const CLI::App* findCommand(CLI::App& app, const std::string& name) {
  if (name.empty()) {
    return &app;
  }
  const auto found =
      app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  return found.empty() ? nullptr : found.front();
}

}  // namespace

void addHelpCommand(CLI::App& app, Action& action) {
  const auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("help", "Explain a command, or list them all");
  command->add_option("COMMAND", *name, "The command to explain");
  command->callback([&app, &action, name] {
    const CLI::App* explained = findCommand(app, *name);
    if (explained == nullptr) {
      throw CLI::ValidationError("there is no command '" + *name + "'");
    }
    action = [text = explained->help()](const Streams& streams) {
      streams.out << text;
      return kExitDone;
    };
  });
}

}  // namespace tevra::tools
