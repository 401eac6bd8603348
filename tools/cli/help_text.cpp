#include "tools/cli/help_text.h"

#include <vector>

#include <CLI/CLI.hpp>

#include "tools/text/wrap.h"

namespace tevra::tools {
namespace {

/** The line of a name and, from `column` on, what it means: below a name too long for that. */
std::string entry(const std::string& name, const std::string& meaning, size_t column) {
  const std::string line = "  " + name;
  const bool fits = line.size() < column;
  return line + (fits ? "" : "\n") + std::string(fits ? column - line.size() : column, ' ') +
         meaning + "\n";
}

/** Nothing of no entries. */
std::string section(const std::string& heading, const std::string& entries) {
  return entries.empty() ? "" : "\n" + heading + ":\n" + entries;
}

/** " INT:0..3=0", " A=B ...", " TEXT REQUIRED"; nothing of one that takes no value. */
std::string valueOf(const CLI::Option& option) {
  if (option.get_type_size() == 0) {
    return "";
  }
  const std::string value = option.get_default_str();
  return " " + option.get_type_name() + (value.empty() ? "" : "=" + value) +
         (option.get_expected_max() > 1 ? " ..." : "") + (option.get_required() ? " REQUIRED" : "");
}

/** What there is of a command, in the order of its declaration. */
struct Parts {
  Parts(const CLI::App& command, size_t column) {
    for (const CLI::Option* option : command.get_options()) {
      const bool isArgument = option->get_positional();
      std::string& entries = isArgument ? arguments : options;
      const std::string name = option->get_name(isArgument, !isArgument);
      entries += entry(name + valueOf(*option), option->get_description(), column);
      usage += !isArgument ? "" : option->get_required() ? " " + name : " [" + name + "]";
    }
    for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; })) {
      commands += entry(each->get_name(), each->get_description(), column);
    }
    usage += commands.empty() ? "" : " COMMAND";
  }

  std::string usage;
  std::string arguments;
  std::string options;
  std::string commands;
};

}  // namespace

std::string calledAs(const CLI::App& command) {
  const CLI::App* parent = command.get_parent();
  return (parent == nullptr ? "" : parent->get_name() + " ") + command.get_name();
}

std::string helpText(const CLI::App& command, size_t width) {
  constexpr size_t kRoomy = 80;
  constexpr size_t kWide = 30;
  constexpr size_t kNarrow = 6;
  const size_t column = width == 0 || width >= kRoomy ? kWide : kNarrow;
  const Parts parts(command, column);
  const std::string text =
      command.get_description() + "\nUsage: " + calledAs(command) + " [OPTIONS]" + parts.usage +
      "\n" + section("Arguments", parts.arguments) + section("Options", parts.options) +
      section("Commands", parts.commands) + "\n" + command.get_footer() + "\n";
  return wrapped(text, width, column);
}

}  // namespace tevra::tools
