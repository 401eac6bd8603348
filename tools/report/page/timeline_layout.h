#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "tools/report/facts/report_data.h"
#include "tools/report/page/geometry.h"

namespace tevra::tools::report {

/** An event, or the part of it that lies in one row. */
struct EventBlock {
  size_t event = 0;     ///< its place in the service
  Box box;              ///< within the row
  bool goesOn = false;  ///< in a later row
  bool began = false;   ///< in an earlier row
};

/** A line across a row: every half hour of 3, every hour of 6 or 12, every two hours of 24. */
struct HourMark {
  double x = 0;         ///< within the row
  StreamTime time = 0;  ///< that it stands for
};

/** Some hours of one day, a picture of its own: between two, a page may end. */
struct TimelineRow {
  StreamTime start = 0;            ///< a multiple of the row's length
  double height = 0;               ///< of the hours above, and the blocks below them
  std::vector<HourMark> hours;     ///< in ascending order, the first at the row's start
  std::vector<EventBlock> blocks;  ///< by the events' places
  std::optional<double> clock;     ///< x where the stream's clock stands; nothing in other rows
  size_t crowdedOut = 0;           ///< events for which there is no room below all the others
};

inline constexpr double kRowLabelWidth = 128;  ///< for the day, on the left of every row
inline constexpr double kHoursHeight = 18;     ///< for the hours, above the blocks of every row

/**
 * The events of one service on as many rows as it takes for most of them to have room for a name:
 * a row is 24, 12, 6 or 3 hours from a multiple of that on. Hours without an event have no row;
 * events at the same time lie one below the other, up to twelve. `events` are by start time, the
 * rows as well.
 */
[[nodiscard]] std::vector<TimelineRow> layoutTimeline(const std::vector<Event>& events,
                                                      std::optional<StreamTime> clock);

}  // namespace tevra::tools::report
