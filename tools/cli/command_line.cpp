#include "tools/cli/command_line.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include <CLI/CLI.hpp>

#include "tools/cli/cli.h"
#include "tools/text/nearest.h"
#include "tools/text/terminal.h"
#include "tools/text/wrap.h"

namespace tevra::tools {
namespace {

/** The options of `app` and its commands. */
std::vector<std::string> wordsOf(const CLI::App& app) {
  std::vector<std::string> words;
  for (const CLI::Option* option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) {
      if (!option->get_group().empty()) {  // those without stand for variables
        words.push_back("--" + name);
      }
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

/** What is wrong with the arguments, and where there is help. */
std::string explain(const CLI::App& app, const std::string& problem) {
  const auto chosen = app.get_subcommands();
  const CLI::App& place = chosen.empty() ? app : *chosen.front();
  const auto unused = place.remaining();
  const auto option = std::find_if(unused.begin(), unused.end(), [](const std::string& word) {
    return word.size() > 1 && word[0] == '-';
  });
  std::string text = problem;
  if (!chosen.empty() && option != unused.end()) {
    text = unknown("option", *option, place);
  } else if (chosen.empty()) {
    text =
        unused.empty() ? "a command is missing" : unknown("command or option", unused.front(), app);
  }
  const std::string command = chosen.empty() ? "" : " " + chosen.front()->get_name();
  return text + "; see tornelctl" + command + " --help";
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
  app_->add_option("--environment-columns", columns_)->envname("COLUMNS")->group("");
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

/** Where there is little room, what an option does stands below it. */
std::string CommandLine::fitted(const std::ostream& out,
                                const std::function<std::string()>& help) const {
  constexpr size_t kRoomy = 80;
  constexpr size_t kWide = 30;
  constexpr size_t kNarrow = 6;
  size_t width = 0;
  if (!CLI::detail::lexical_cast(columns_, width) || width == 0) {
    width = widthOf(out);
  }
  const size_t column = width == 0 || width >= kRoomy ? kWide : kNarrow;
  app_->get_formatter()->column_width(column);
  // The library leaves two lines blank before a group that is not shown.
  return wrapped(CLI::detail::find_and_replace(help(), "\n\n\n", "\n\n"), width, column);
}

std::string CommandLine::help(const std::string& name, const std::ostream& out) const {
  if (name.empty()) {
    // Its own help() would explain the command that is chosen.
    return fitted(out, [this] {
      return app_->get_formatter()->make_help(app_.get(), app_->get_name(),
                                              CLI::AppFormatMode::Normal);
    });
  }
  const auto found =
      app_->get_subcommands([&](const CLI::App* command) { return command->get_name() == name; });
  if (found.empty()) {
    throw ArgumentError(unknown("command", name, *app_));
  }
  return fitted(out, [&] { return found.front()->help(app_->get_name()); });
}

int CommandLine::run(int argc, const char* const* argv, const Console& console) {
  try {
    app_->parse(argc, argv);
    return chosen_(console);
  } catch (const CLI::Success& asked) {
    console.out << fitted(console.out, [&] {
      std::ostringstream text;
      (void)app_->exit(asked, text, text);
      return text.str();
    });
    return kExitDone;
  } catch (const CLI::ParseError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  } catch (const ArgumentError& error) {
    printMessage(console.err, explain(*app_, error.what()));
  }
  return kExitUsage;
}

}  // namespace tevra::tools
