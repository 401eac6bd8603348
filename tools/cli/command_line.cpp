#include "tools/cli/command_line.h"

#include <algorithm>
#include <cctype>

#include <CLI/CLI.hpp>

#include "tools/cli/cli.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

/** What is wrong with the arguments, and where there is help. */
std::string explain(const CLI::App& app, const std::string& problem) {
  const auto chosen = app.get_subcommands();
  const auto unknown = app.remaining();
  std::string text = problem;
  if (chosen.empty()) {
    text = unknown.empty() ? "a command is missing"
                           : "there is no command or option '" + unknown.front() + "'";
  }
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  return "tornelctl: " + oneLine(text) + "; see tornelctl" + command + " --help\n";
}

template <class Value>
CLI::Option& declare(CLI::App& app, const std::string& name, Value& value,
                     const std::string& help) {
  return *app.add_option(name, value, help);
}

}  // namespace

Option Option::required() {
  option_.required();
  return *this;
}

Option Option::range(int lowest, int highest) {
  option_.check(CLI::Range(lowest, highest)
                    .description(std::to_string(lowest) + ".." + std::to_string(highest)));
  return *this;
}

Option Option::oneOf(const std::vector<std::string>& values) {
  option_.check(CLI::IsMember(values));
  return *this;
}

Option Option::checked(const Check& check, const std::string& form) {
  option_.check(CLI::Validator(check, form));
  return *this;
}

Option Option::marks(bool& isGiven) {
  option_.each([&isGiven](const std::string& /*value*/) { isGiven = true; });
  return *this;
}

Option Option::called(const std::string& name) {
  option_.type_name(name);
  return *this;
}

void Command::flag(const std::string& name, bool& value, const std::string& help) {
  app_.add_flag(name, value, help);
}

Option Command::option(const std::string& name, int& value, const std::string& help) {
  return Option(*declare(app_, name, value, help).capture_default_str());
}

Option Command::option(const std::string& name, std::optional<int>& value,
                       const std::string& help) {
  return Option(declare(app_, name, value, help));
}

Option Command::option(const std::string& name, std::string& value, const std::string& help) {
  return Option(*declare(app_, name, value, help).capture_default_str());
}

Option Command::option(const std::string& name, std::optional<std::string>& value,
                       const std::string& help) {
  return Option(declare(app_, name, value, help));
}

Option Command::option(const std::string& name, std::vector<std::string>& value,
                       const std::string& help) {
  return Option(*declare(app_, name, value, help).allow_extra_args(false));
}

Option Command::list(const std::string& name, std::vector<std::string>& value,
                     const std::vector<std::string>& names, const std::string& help) {
  CLI::Option& option = declare(app_, name, value, help);
  option.transform(CLI::IsMember(names, CLI::ignore_case).description(""));
  return Option(*option.delimiter(',')->expected(1)->take_all());
}

void Command::environment(const std::string& variable, std::string& value) {
  // The library reads variables for options alone; without a group this one is out of the help.
  std::string name = "--environment-" + variable;
  std::transform(name.begin(), name.end(), name.begin(), [](char c) {
    return c == '_' ? '-' : static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  });
  app_.add_option(name, value)->envname(variable)->group("");
}

void Command::action(const Action& action) {
  app_.callback([&chosen = chosen_, action] { chosen = action; });
}

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>(
          "Shows what the tornel daemon makes of a transport stream, and is the daemon's client.",
          "tornelctl")) {
  app_->set_version_flag("--version", "tornelctl " TORNEL_VERSION);
  app_->require_subcommand(1);
  app_->get_formatter()->label("SUBCOMMAND", "COMMAND");
  app_->footer(
      "Exit status: 0 done, 1 the daemon or the stream said no, 2 wrong usage.\n"
      "'tornelctl COMMAND --help' lists the options of a command.");
}

CommandLine::~CommandLine() = default;

Command CommandLine::command(const std::string& name, const std::string& help) {
  return {*app_->add_subcommand(name, help), chosen_};
}

std::string CommandLine::help(const std::string& name) const {
  if (name.empty()) {
    // Its own help() would explain the command that is chosen.
    return app_->get_formatter()->make_help(app_.get(), app_->get_name(),
                                            CLI::AppFormatMode::Normal);
  }
  const auto found =
      app_->get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  if (found.empty()) {
    throw ArgumentError("there is no command '" + name + "'");
  }
  return found.front()->help(app_->get_name());
}

int CommandLine::run(int argc, const char* const* argv, const Console& console) {
  try {
    app_->parse(argc, argv);
    return chosen_(console);
  } catch (const CLI::Success& asked) {
    return app_->exit(asked, console.out, console.err);
  } catch (const CLI::ParseError& error) {
    console.err << explain(*app_, error.what());
  } catch (const ArgumentError& error) {
    console.err << explain(*app_, error.what());
  }
  return kExitUsage;
}

}  // namespace tevra::tools
