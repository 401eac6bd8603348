#pragma once

#include <string>

namespace tevra::bench {

/**
 * Hands a "tot", the tables of 100 "services", the "requests" for them, or the schedule with
 * that number of events, to the daemon of the first MPTS on this machine, and returns the exit
 * status.
 */
[[nodiscard]] int sendTables(const std::string& what);

}  // namespace tevra::bench
