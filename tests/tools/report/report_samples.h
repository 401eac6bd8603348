#pragma once

#include <cstddef>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report::test {

/**
 * A multiplex of so many services, each with a PMT and `streams` streams and an output with PAT,
 * SDT, PMT, the streams and an EMM PID that all share; PIDs of no service besides.
 */
[[nodiscard]] Report reportOf(size_t services, size_t streams);

/** Back to back from noon on, all as long as `minutes`. */
[[nodiscard]] std::vector<Event> eventsOf(size_t count, int64_t minutes);

/** 2024-05-17 12:00:00. */
inline constexpr StreamTime kNoon = StreamTime{60447} * 86400 + StreamTime{12} * 3600;

}  // namespace tevra::tools::report::test
