#include "tools/cli/command_line.h"

#include <algorithm>
#include <limits>

#include <CLI/CLI.hpp>

#include "tools/cli/cli.h"
#include "tools/cli/help_text.h"
#include "tools/text/nearest.h"
#include "tools/text/terminal.h"
#include "tools/text/words.h"

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
  const int64_t columns = wholeNumber(environmentVariable("COLUMNS")).value_or(0);
  return columns > 0 ? static_cast<size_t>(columns) : widthOf(out);
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
  const auto unused = app.remaining(true);
  const auto option = std::find_if(unused.begin(), unused.end(), [](const std::string& word) {
    return word.size() > 1 && word[0] == '-';
  });
  std::string text = problem;
  if (isChosen && option != unused.end()) {
    const std::string name = option->substr(0, option->find('='));
    text = command.get_option_no_throw(name) == nullptr
               ? unknown("option", *option, command)
               : name + " has its place behind '" + command.get_name() + "'";
  } else if (!isChosen) {
    text =
        unused.empty() ? "a command is missing" : unknown("command or option", unused.front(), app);
  }
  return text + "; see " + calledAs(command) + " --help";
}

/** Of an option with too few or too many values, whose name `problem` begins with. */
std::string explainCount(const CLI::App& app, const std::string& problem) {
  const std::string name = problem.substr(0, problem.find(':'));
  const CLI::Option* option = commandOf(app).get_option_no_throw(name);
  const bool isRepeated = option != nullptr && option->count() > 1;
  return explain(app, name + (isRepeated ? " is given more than once" : " needs a value"));
}

std::string noneOf(const std::vector<std::string>& values, const std::string& value) {
  return "'" + value + "' is none of " + joined(values, ", ");
}

/**
 * What lies in the range goes to the library in decimal: it takes a leading 0 for octal. `form` is
 * for the help.
 */
void refuseAllBut(CLI::Option& option, int lowest, int highest, const std::string& form) {
  const auto transform = [=](std::string& text) {
    const std::optional<int64_t> number = wholeNumber(text);
    if (!number || *number < lowest || *number > highest) {
      return "'" + text + "' is no whole number from " + std::to_string(lowest) + " to " +
             std::to_string(highest);
    }
    text = std::to_string(*number);
    return std::string();
  };
  option.transform(CLI::Validator(transform, form));
}

template <class Value>
CLI::Option& declareNumber(CLI::App& app, const std::string& name, Value& value,
                           const std::string& help) {
  using Limits = std::numeric_limits<int>;
  CLI::Option& option = *app.add_option(name, value, help);
  refuseAllBut(option, Limits::min(), Limits::max(), "");
  return option;
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
  refuseAllBut(option_, lowest, highest, std::to_string(lowest) + ".." + std::to_string(highest));
  return *this;
}

Option Option::oneOf(const std::vector<std::string>& values) {
  const auto faultOf = [values](const std::string& value) {
    const bool isThere = std::find(values.begin(), values.end(), value) != values.end();
    return isThere ? std::string() : noneOf(values, value);
  };
  return checked(faultOf, "{" + joined(values, ",") + "}");
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
  return Option(*declareNumber(app_, name, value, help).capture_default_str());
}

Option Command::option(const std::string& name, std::optional<int>& value,
                       const std::string& help) {
  return Option(declareNumber(app_, name, value, help));
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
  const auto transform = [names](std::string& text) {
    const auto isIt = [&text](const std::string& each) {
      return CLI::detail::to_lower(each) == CLI::detail::to_lower(text);
    };
    const auto found = std::find_if(names.begin(), names.end(), isIt);
    if (found == names.end()) {
      return noneOf(names, text);
    }
    text = *found;
    return std::string();
  };
  option.transform(CLI::Validator(transform, ""));
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
  } catch (const CLI::ArgumentMismatch& error) {
    printMessage(console.err, explainCount(*app_, error.what()));
  } catch (const CLI::ExtrasError& /*error*/) {
    printMessage(console.err, explain(*app_, "there is no place for '" +
                                                 joined(app_->remaining(true), "', '") + "'"));
  } catch (const CLI::ParseError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  } catch (const ArgumentError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  }
  return kExitUsage;
}

}  // namespace tevra::tools
