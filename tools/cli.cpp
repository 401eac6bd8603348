#include "tools/cli.h"

#include <exception>
#include <string>

#include "tools/command.h"

namespace tevra::tools {
namespace {

/**
 * Chooses the command: leaves `action` empty when there is none to run, and returns the exit status
 * for that.
 */
int parse(int argc, const char* const* argv, Action& action, const Streams& streams) {
  CLI::App app(
      "Client of the tornel daemon: feeds it the tables of a transport stream and asks it for "
      "outputs.",
      "tornelctl");
  app.set_version_flag("--version", "tornelctl " TORNEL_VERSION);
  app.require_subcommand(1);
  app.get_formatter()->label("SUBCOMMAND", "COMMAND");
  app.failure_message([](const CLI::App*, const CLI::Error& error) {
    return "tornelctl: " + std::string(error.what()) + "\nSee tornelctl --help.\n";
  });
  app.footer(
      "Exit status: 0 done, 1 the daemon or the stream said no, 2 wrong usage.\n"
      "'tornelctl COMMAND --help' lists the options of a command.");
  addFeedCommand(app, action);
  addOutputCommand(app, action);
  addExtractCommand(app, action);
  addTablesCommand(app, action);
  addReportCommand(app, action);
  addListenCommand(app, action);
  addResetCommand(app, action);
  addPingCommand(app, action);
  addHelpCommand(app, action);
  try {
    app.parse(argc, argv);
    return kExitDone;
  } catch (const CLI::ParseError& error) {
    return app.exit(error, streams.out, streams.err) == 0 ? kExitDone : kExitUsage;
  }
}

}  // namespace

int runTornelctl(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  const Streams streams = {out, err};
  Action action;
  try {
    const int status = parse(argc, argv, action, streams);
    if (!action) {
      return status;
    }
    return action(streams);
  } catch (const std::exception& error) {
    err << "tornelctl: " << error.what() << "\n";
  }
  return kExitFailed;
}

}  // namespace tevra::tools
