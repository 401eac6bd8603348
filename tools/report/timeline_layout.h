#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "tools/report/geometry.h"
#include "tools/report/report_data.h"

namespace tevra::tools::report {

/** An event, or the part of it that lies in one row. */
struct EventBlock {
  size_t event = 0;  ///< its place in the service
  Box box;
  bool goesOn = false;  ///< in a later row
  bool began = false;   ///< in an earlier row
};

struct HourMark {
  double x = 0;
  StreamTime time = 0;
};

/** Some hours of one day. */
struct TimelineRow {
  StreamTime start = 0;
  Box box;  ///< with the hours above and the blocks in it
  std::vector<HourMark> hours;
  std::vector<EventBlock> blocks;
  std::optional<double> clock;  ///< where the stream's clock stands
  size_t crowdedOut = 0;        ///< events for which there is no room below all the others
};

/** Rows that fit on a page together. */
struct TimelineSheet {
  double height = 0;
  std::vector<TimelineRow> rows;
};

inline constexpr double kRowLabelWidth = 128;
inline constexpr double kHoursHeight = 18;

/**
 * The events of one service on as many rows as it takes for most of them to have room for a name:
 * a row is 24, 12, 6 or 3 hours from a multiple of that on. Hours without an event have no row;
 * events at the same time lie one below the other, up to twelve. `events` are by start time; no
 * sheet without any. Depends on nothing but the arguments.
 */
[[nodiscard]] std::vector<TimelineSheet> layoutTimeline(const std::vector<Event>& events,
                                                        std::optional<StreamTime> clock);

}  // namespace tevra::tools::report
