#pragma once

#include <optional>
#include <vector>

#include "records/records.h"
#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

/** The events of one service. */
struct EventList {
  std::vector<Event> events;  ///< by start time, an event of both kinds of EIT once
  size_t timeless = 0;        ///< left out: no start time or duration that makes sense
};

/**
 * Joins present/following and schedules. Records do not tell from which section an event came: of
 * two in a present/following the first is present; one alone is following if it starts after
 * `clock`, the stream's own, else present.
 */
[[nodiscard]] EventList eventList(const std::vector<EIT>& eits, std::optional<StreamTime> clock);

}  // namespace tevra::tools::report
