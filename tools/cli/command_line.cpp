#include "tools/cli/command_line.h"

#include <algorithm>
#include <cctype>

#include <CLI/CLI.hpp>

#include "tools/cli/cli.h"
#include "tools/cli/help_text.h"
#include "tools/text/nearest.h"
#include "tools/text/terminal.h"

namespace tevra::tools {
namespace {

/** The options of `app` and its commands. */
std::vector<std::string> wordsOf(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      words.push_back("--" + name);
    }
  }
  for (const CLI::App* command :
       app.get_subcommands([](const CLI::App* /*any*/) { return true; })) {
    words.push_back(command->get_name());
  }
  return words;
}

/** That there is no such `kind` of thing, and which of `app` may have been meant. */
std::string unknown(const std::string& kind, const std::string& word, const CLI::App& app) {
  const std::string nearest = nearestTo(word.substr(0, word.find('=')), wordsOf(app));
  return "there is no " + kind + " '" + word + "'" +
         (nearest.empty() ? "" : " (did you mean '" + nearest + "'?)");
}

/** How wide help on `out` may be; 0 is no limit. */
size_t columnsOf(const std::ostream& out) {
  size_t columns = 0;
  const bool isNumber = CLI::detail::lexical_cast(environmentVariable("COLUMNS"), columns);
  return isNumber && columns > 0 ? columns : widthOf(out);
}

/** The command that the arguments name; `app` where they name none. */
const CLI::App& commandOf(const CLI::App& app) {
  const auto chosen = app.get_subcommands();
  return chosen.empty() ? app : *chosen.front();
}

/** What is wrong with the arguments, and where there is help. */
std::string explain(const CLI::App& app, const std::string& problem) {
  const CLI::App& command = commandOf(app);
  const bool isChosen = &command != &app;
  const auto unused = command.remaining();
  const auto option = std::find_if(unused.begin(), unused.end(), [](const std::string& word) {
    return word.size() > 1 && word[0] == '-';
  });
  std::string text = problem;
  if (isChosen && option != unused.end()) {
    text = unknown("option", *option, command);
  } else if (!isChosen) {
    text =
        unused.empty() ? "a command is missing" : unknown("command or option", unused.front(), app);
  }
  return text + "; see " + calledAs(command) + " --help";
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
  const std::string first = std::to_string(lowest);
  const std::string last = std::to_string(highest);
  const auto faultOf = [=](const std::string& text) {
    int value = 0;
    const bool isNumber = CLI::detail::lexical_cast(text, value);
    return isNumber && value >= lowest && value <= highest
               ? ""
               : "'" + text + "' is no whole number from " + first + " to " + last;
  };
  return checked(faultOf, first + ".." + last);
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

void Command::action(const Action& action) {
  app_.callback([&chosen = chosen_, action] { chosen = action; });
}

CommandLine::CommandLine()
    : app_(std::make_unique<CLI::App>(
          "Shows what the tornel daemon makes of a transport stream, and is the daemon's client.",
          "tornelctl")) {
  app_->set_version_flag("--version", "tornelctl " TORNEL_VERSION);
  app_->require_subcommand(1);
  app_->footer(
      "Exit status: 0 done, 1 the daemon or the stream said no, 2 wrong usage.\n"
      "'tornelctl COMMAND --help' lists the options of a command.");
}

CommandLine::~CommandLine() = default;

Command CommandLine::command(const std::string& name, const std::string& help) {
  return {*app_->add_subcommand(name, help), chosen_};
}

std::string CommandLine::help(const std::string& name, const std::ostream& out) const {
  if (name.empty()) {
    return helpText(*app_, columnsOf(out));
  }
  const auto found =
      app_->get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  if (found.empty()) {
    throw ArgumentError(unknown("command", name, *app_));
  }
  return helpText(*found.front(), columnsOf(out));
}

int CommandLine::run(int argc, const char* const* argv, const Console& console) {
  try {
    app_->parse(argc, argv);
    return chosen_(console);
  } catch (const CLI::CallForHelp& /*asked*/) {
    console.out << helpText(commandOf(*app_), columnsOf(console.out));
    return kExitDone;
  } catch (const CLI::CallForVersion& version) {
    console.out << version.what() << '\n';
    return kExitDone;
  } catch (const CLI::ParseError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  } catch (const ArgumentError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  }
  return kExitUsage;
}

}  // namespace tevra::tools
