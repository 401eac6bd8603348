#include "tools/cli/cli.h"

#include <exception>
#include <string>

#include "tools/cli/command.h"
#include "tools/text/tool_error.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** What is wrong with the arguments; `app` is the program, whose command may have been chosen. */
std::string explain(const CLI::App* app, const CLI::Error& error) {
  const auto chosen = app->get_subcommands();
  const auto unknown = app->remaining();
  std::string problem = error.what();
  if (chosen.empty()) {
    problem = unknown.empty() ? "a command is missing"
                              : "there is no command or option '" + unknown.front() + "'";
  }
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  return "tornelctl: " + oneLine(problem) + "; see tornelctl" + command + " --help\n";
}

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
  app.failure_message(explain);
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
  } catch (const UsageError& error) {
    err << "tornelctl: " << oneLine(error.what()) << "\n";
    return kExitUsage;
  } catch (const std::exception& error) {
    err << "tornelctl: " << oneLine(error.what()) << "\n";
    return kExitFailed;
  }
}

}  // namespace tevra::tools
