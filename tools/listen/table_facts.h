#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/si/si_table.h"

namespace tevra::tools {

/**
 * What tells a table from others of its kind: SDT, NIT, BAT and EIT by table_id and the ids of
 * service, transport stream and networks, a PMT by its programme number; of PAT, CAT and TOT a
 * stream has one.
 */
[[nodiscard]] std::vector<int> idsOf(const SiTable& table);

/** "service 101"; empty for a table that is about nothing in particular. */
[[nodiscard]] std::string subjectText(const SiTable& table);

/** Nothing for a TOT, which has none. */
[[nodiscard]] std::optional<int> versionOf(const SiTable& table);

/** How much it holds: "3 streams", "PCR on PID 502". */
[[nodiscard]] std::vector<std::string> contentTexts(const SiTable& table);

/** How many seconds the clock of a TOT is behind `now`; nothing of another table. */
[[nodiscard]] std::optional<int64_t> secondsBehind(const SiTable& table,
                                                   std::chrono::system_clock::time_point now);

/** About how many bytes it takes in memory. */
[[nodiscard]] size_t memoryOf(const SiTable& table);

}  // namespace tevra::tools
