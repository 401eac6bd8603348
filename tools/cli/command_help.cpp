#include "tools/cli/cli.h"
#include "tools/cli/command.h"

namespace tevra::tools {
namespace {

/** What `tornelctl COMMAND --help` prints, `tornelctl --help` without a name. */
std::string helpOn(const CLI::App& app, const std::string& name) {
  if (name.empty()) {
    // Its own help() would explain the chosen command, which is this one.
    return app.get_formatter()->make_help(&app, app.get_name(), CLI::AppFormatMode::Normal);
  }
  const auto found =
      app.get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  if (found.empty()) {
    throw CLI::ValidationError("there is no command '" + name + "'");
  }
  return found.front()->help(app.get_name());
}

}  // namespace

void addHelpCommand(CLI::App& app, Action& action) {
  const auto name = std::make_shared<std::string>();
  CLI::App* command = app.add_subcommand("help", "Explain a command, or list them all");
  command->add_option("COMMAND", *name, "The command to explain");
  command->callback([&app, &action, name] {
    action = [text = helpOn(app, *name)](const Streams& streams) {
      streams.out << text;
      return kExitDone;
    };
  });
}

}  // namespace tevra::tools
