#pragma once

#include <cstddef>
#include <string>

namespace CLI {  // NOLINT(readability-identifier-naming)
class App;
}  // namespace CLI

namespace tevra::tools {

/** "tornelctl", "tornelctl extract". */
[[nodiscard]] std::string calledAs(const CLI::App& command);

/**
 * What a command is for and how it is called, with its arguments, options and commands, each with
 * its type and default: in lines of `width` characters at most, as far as their words are short
 * enough; 0 is no limit. The library's own help is another with each of its versions, and people
 * and the shell's completion read it.
 */
[[nodiscard]] std::string helpText(const CLI::App& command, size_t width);

}  // namespace tevra::tools
