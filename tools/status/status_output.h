#pragma once

#include <chrono>
#include <cstddef>
#include <string>
#include <vector>

#include "tools/status/set_status.h"

namespace tevra::tools {

/**
 * For people; `now` is what the age of the files is reckoned from, and `width` the characters that
 * a line has room for, 0 without a limit.
 */
[[nodiscard]] std::string statusText(const std::vector<SetStatus>& sets,
                                     std::chrono::system_clock::time_point now, size_t width);

/** One JSON object. */
[[nodiscard]] std::string statusJson(const std::vector<SetStatus>& sets);

/**
 * OpenMetrics 1.0 text, of gauges alone and without time stamps, so that Prometheus' older text
 * format and the textfile collector of its node exporter take it as well.
 */
[[nodiscard]] std::string statusMetrics(const std::vector<SetStatus>& sets);

}  // namespace tevra::tools
