#pragma once

#include <chrono>
#include <string>

namespace tevra::tools {

/** In whose time: the machine's zone, as TZ or /etc/localtime say, or UTC. */
enum class Zone { kLocal, kUtc };

/** "2026-11-21 20:41:07.123" */
[[nodiscard]] std::string timeStamp(std::chrono::system_clock::time_point time, Zone zone);

/** ISO 8601: "2026-11-21T20:41:07.123+01:00", in UTC "2026-11-21T19:41:07.123Z". */
[[nodiscard]] std::string isoTimeStamp(std::chrono::system_clock::time_point time, Zone zone);

}  // namespace tevra::tools
