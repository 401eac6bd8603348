#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <variant>

#include "tools/cli/command_line.h"
#include "tools/stream/byte_source.h"

namespace tevra::tools {

/** Where a command has its transport stream from. */
struct SourceOptions {
  std::string name;            ///< as openSource takes it
  std::optional<int> seconds;  ///< for how long it is read; nothing: to its end
};

/** How the help calls what a command reads. */
inline constexpr const char* kFileArgument = "FILE";

/**
 * The argument FILE, without which the command cannot do, or the option `name` in its place; and
 * --seconds. Parsing writes to `options`, which must outlive `command`.
 */
void addSource(Command& command, SourceOptions& options, const std::string& name = kFileArgument);

/** Says on `err` that a live stream which is read without --seconds will have to be interrupted. */
void tellHowItEnds(const SourceOptions& options, std::ostream& err);

/** For how many seconds nothing may come from a live stream; or else who is told of silence. */
using Patience = std::variant<int, OnSilence>;

/**
 * Runs `read` with the source open. It ends early on SIGINT and SIGTERM, after --seconds, and when
 * a live stream has stayed away for longer than `patience`.
 *
 * Raises ToolError when the source cannot be opened, and behind `read`, so that nothing that came
 * is lost, when silence has ended it. Passes on what `read` raises.
 */
void withSource(const SourceOptions& options, const Patience& patience,
                const std::function<void(ByteSource& source)>& read);

}  // namespace tevra::tools
