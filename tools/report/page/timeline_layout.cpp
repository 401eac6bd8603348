#include "tools/report/page/timeline_layout.h"

#include <algorithm>
#include <map>
#include <utility>

#include "tools/text/dvb_time.h"

namespace tevra::tools::report {
namespace {

constexpr double kAxisWidth = kPictureWidth - kRowLabelWidth - 4;
constexpr double kLaneHeight = 26;
constexpr size_t kMostLanes = 12;
constexpr double kBlockHeight = 23;
constexpr double kBlockGap = 2;
constexpr double kNarrowest = 2;
constexpr double kRowFoot = 8;
/** Room for a short name. */
constexpr double kUsefulWidth = 84;

constexpr int64_t kShortestRow = kDay / 8;

/** Whether rows of this length would be one. */
bool fitInOneRow(const std::vector<Event>& events, int64_t rowSeconds) {
  StreamTime end = 0;
  for (const Event& event : events) {
    end = std::max(end, event.start + event.duration);
  }
  return events.front().start / rowSeconds == (end - 1) / rowSeconds;
}

/** The longest row in which an event of middling length has room for a name. */
int64_t rowSecondsFor(const std::vector<Event>& events) {
  std::vector<int64_t> durations;
  durations.reserve(events.size());
  for (const Event& event : events) {
    durations.push_back(event.duration);
  }
  const auto median = durations.begin() + static_cast<std::ptrdiff_t>(durations.size() / 2);
  std::nth_element(durations.begin(), median, durations.end());
  int64_t span = kDay;
  while (span > kShortestRow &&
         (static_cast<double>(*median) * kAxisWidth < kUsefulWidth * static_cast<double>(span) ||
          fitInOneRow(events, span / 2))) {
    span /= 2;
  }
  return span;
}

/** A row while it fills. */
struct Row {
  TimelineRow shown;
  std::vector<double> laneEnds;  // right end of each lane's last block
};

double xOf(int64_t second, int64_t rowSeconds) {
  return kRowLabelWidth +
         kAxisWidth * static_cast<double>(second) / static_cast<double>(rowSeconds);
}

/** In the first lane in which it meets no other, if there is one. */
void insert(EventBlock block, Row& row) {
  size_t lane = 0;
  while (lane < row.laneEnds.size() && row.laneEnds[lane] > block.box.x) {
    ++lane;
  }
  if (lane == kMostLanes) {
    ++row.shown.crowdedOut;
    return;
  }
  row.laneEnds.resize(std::max(row.laneEnds.size(), lane + 1));
  row.laneEnds[lane] = block.box.right();
  block.box.y = kHoursHeight + static_cast<double>(lane) * kLaneHeight;
  row.shown.blocks.push_back(block);
}

/** A block in every row that the event touches. */
void insert(const Event& event, size_t place, int64_t rowSeconds, std::map<StreamTime, Row>& rows) {
  const StreamTime end = event.start + std::max<int64_t>(event.duration, 1);
  for (StreamTime start = event.start / rowSeconds * rowSeconds; start < end; start += rowSeconds) {
    const double left = xOf(std::max(event.start, start) - start, rowSeconds);
    const double right = xOf(std::min(end, start + rowSeconds) - start, rowSeconds);
    const Box box = {left, 0, std::max(right - left - kBlockGap, kNarrowest), kBlockHeight};
    insert({place, box, /*goesOn=*/end > start + rowSeconds, /*began=*/event.start < start},
           rows[start]);
  }
}

std::vector<HourMark> hoursFrom(StreamTime start, int64_t rowSeconds) {
  const int64_t step = rowSeconds == kDay           ? 2 * kHour
                       : rowSeconds == kShortestRow ? kHour / 2
                                                    : kHour;
  std::vector<HourMark> hours;
  for (int64_t second = 0; second < rowSeconds; second += step) {
    hours.push_back({xOf(second, rowSeconds), start + second});
  }
  return hours;
}

}  // namespace

std::vector<TimelineRow> layoutTimeline(const std::vector<Event>& events,
                                        std::optional<StreamTime> clock) {
  std::vector<TimelineRow> shown;
  if (events.empty()) {
    return shown;
  }
  const int64_t rowSeconds = rowSecondsFor(events);
  std::map<StreamTime, Row> rows;
  for (size_t place = 0; place < events.size(); ++place) {
    insert(events[place], place, rowSeconds, rows);
  }
  for (auto& [start, row] : rows) {
    TimelineRow& last = shown.emplace_back(std::move(row.shown));
    last.start = start;
    last.height = kHoursHeight + static_cast<double>(row.laneEnds.size()) * kLaneHeight + kRowFoot;
    last.hours = hoursFrom(start, rowSeconds);
    if (clock && *clock >= start && *clock < start + rowSeconds) {
      last.clock = xOf(*clock - start, rowSeconds);
    }
  }
  return shown;
}

}  // namespace tevra::tools::report
