#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "tools/text/tool_error.h"

namespace CLI {  // NOLINT(readability-identifier-naming)
class App;
class Option;
}  // namespace CLI

namespace tevra::tools {

/** What a command writes to. */
struct Console {
  std::ostream& out;  ///< results; standard output
  std::ostream& err;  ///< messages: faults, progress, what went wrong; standard error
};

/** What a command does: returns the exit status or raises ToolError or UsageError. */
using Action = std::function<int(const Console& console)>;

/** Arguments of a command that make no sense together; the message points to the command's help. */
class ArgumentError : public UsageError {
 public:
  using UsageError::UsageError;
};

/** An option that has been declared, to say more of it. */
class Option {
 public:
  /** Says what is wrong with a value, nothing if it is well. */
  using Check = std::function<std::string(const std::string& value)>;

  /** Of the library's option, which is the command's. */
  explicit Option(CLI::Option& option) : option_(option) {}

  /** The command cannot do without. */
  Option required();
  /** A number outside is refused; both ends are inside. */
  Option range(int lowest, int highest);
  /** Any other value is refused. */
  Option oneOf(const std::vector<std::string>& values);
  /** Refuses a value that `check` finds fault with; the help calls its form `form`. */
  Option checked(const Check& check, const std::string& form = "");
  /** `isGiven` becomes true when it is on the command line. */
  Option marks(bool& isGiven);
  /** What the help calls the value, instead of its type. */
  Option called(const std::string& name);

 private:
  CLI::Option& option_;
};

/** A command that is being declared. Its help lists the options in the order of their declaration.
 */
class Command {
 public:
  /** Of the library's command; an action goes to `chosen` when the command is chosen. */
  Command(CLI::App& app, Action& chosen) : app_(app), chosen_(chosen) {}

  /** An option without a value: `value` becomes true. */
  void flag(const std::string& name, bool& value, const std::string& help);

  ///@{
  /**
   * An option, "--name" or "-n,--name", or an argument, "NAME". Parsing writes to `value`, which
   * must outlive it. What `value` holds now is the default, and the help says so, unless it is
   * nothing or empty. One with several values is given again for each.
   */
  Option option(const std::string& name, int& value, const std::string& help);
  Option option(const std::string& name, std::optional<int>& value, const std::string& help);
  Option option(const std::string& name, std::string& value, const std::string& help);
  Option option(const std::string& name, std::optional<std::string>& value,
                const std::string& help);
  Option option(const std::string& name, std::vector<std::string>& value, const std::string& help);
  ///@}

  /** Any of `names`, in any case, given again or with commas between them. */
  Option list(const std::string& name, std::vector<std::string>& value,
              const std::vector<std::string>& names, const std::string& help);

  /** What it does once all options are known. */
  void action(const Action& action);

 private:
  CLI::App& app_;
  Action& chosen_;
};

/** The command line of tornelctl. */
class CommandLine {
 public:
  CommandLine();
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /** Declares a command; `help` is what it does, in a sentence. */
  Command command(const std::string& name, const std::string& help);

  /**
   * What `tornelctl NAME --help` prints on `out`; `tornelctl --help` without a name. Its lines fit
   * the terminal, or the variable COLUMNS. Raises ArgumentError for a command that there is not.
   */
  [[nodiscard]] std::string help(const std::string& name, const std::ostream& out) const;

  /**
   * Does what the arguments of main say, and returns the exit status. Says itself what is wrong
   * with them; passes on what the command's action raises, but ArgumentError.
   */
  [[nodiscard]] int run(int argc, const char* const* argv, const Console& console);

 private:
  std::unique_ptr<CLI::App> app_;
  Action chosen_;
};

}  // namespace tevra::tools
