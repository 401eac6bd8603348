#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/si/si_table.h"

namespace tevra::tools {

/** How much it holds: "3 streams", "PCR on PID 502". */
[[nodiscard]] std::vector<std::string> contentTexts(const SiTable& table);

/** How many seconds the clock of a TOT is behind `now`; nothing of another table. */
[[nodiscard]] std::optional<int64_t> secondsBehind(const SiTable& table,
                                                   std::chrono::system_clock::time_point now);

/** About how many bytes it takes in memory. */
[[nodiscard]] size_t memoryOf(const SiTable& table);

}  // namespace tevra::tools
