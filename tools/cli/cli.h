#pragma once

#include <ostream>

namespace tevra::tools {

/** Nothing went wrong. */
inline constexpr int kExitDone = 0;
/** The daemon, the stream or the machine said no; one line on the error stream says why. */
inline constexpr int kExitFailed = 1;
/** The arguments make no sense. */
inline constexpr int kExitUsage = 2;

/**
 * Runs tornelctl with the arguments of main and returns its exit status. What cannot be written to
 * `out` is a failure.
 */
[[nodiscard]] int runTornelctl(int argc, const char* const* argv, std::ostream& out,
                               std::ostream& err);

}  // namespace tevra::tools
