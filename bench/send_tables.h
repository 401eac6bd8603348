#pragma once

#include <string>

namespace tevra::bench {

/** Hands "tot" or "schedule", the full one, to the daemon of the first MPTS on this machine, and
 * returns the exit status. */
[[nodiscard]] int sendTables(const std::string& what);

}  // namespace tevra::bench
