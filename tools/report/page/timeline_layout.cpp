#include "tools/report/page/timeline_layout.h"

#include <algorithm>
#include <array>
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
constexpr double kSheetHeight = 1200;
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

/** Fills rows with blocks; y is set when all are known. */
class RowBuilder {
 public:
  explicit RowBuilder(int64_t rowSeconds) : rowSeconds_(rowSeconds) {}

  void add(const Event& event, size_t place) {
    const StreamTime end = event.start + std::max<int64_t>(event.duration, 1);
    for (StreamTime start = event.start / rowSeconds_ * rowSeconds_; start < end;
         start += rowSeconds_) {
      EventBlock block;
      block.event = place;
      block.began = event.start < start;
      block.goesOn = end > start + rowSeconds_;
      const double left = xOf(std::max(event.start, start) - start);
      const double right = xOf(std::min(end, start + rowSeconds_) - start);
      block.box = {left, 0, std::max(right - left - kBlockGap, kNarrowest), kBlockHeight};
      insert(start, block);
    }
  }

  std::vector<TimelineRow> finish(std::optional<StreamTime> clock) {
    std::vector<TimelineRow> rows;
    for (auto& [start, row] : rows_) {
      row.timeline.start = start;
      row.timeline.box = {
          0, 0, kPictureWidth,
          kHoursHeight + static_cast<double>(row.laneEnds.size()) * kLaneHeight + kRowFoot};
      addHours(row.timeline);
      if (clock && *clock >= start && *clock < start + rowSeconds_) {
        row.timeline.clock = xOf(*clock - start);
      }
      rows.push_back(std::move(row.timeline));
    }
    return rows;
  }

 private:
  struct Row {
    TimelineRow timeline;
    std::vector<double> laneEnds;  // right end of each lane's last block
  };

  [[nodiscard]] double xOf(int64_t second) const {
    return kRowLabelWidth +
           kAxisWidth * static_cast<double>(second) / static_cast<double>(rowSeconds_);
  }

  /** In the first lane in which it meets no other, if there is one. */
  void insert(StreamTime start, EventBlock block) {
    Row& row = rows_[start];
    size_t lane = 0;
    while (lane < row.laneEnds.size() && row.laneEnds[lane] > block.box.x) {
      ++lane;
    }
    if (lane == kMostLanes) {
      ++row.timeline.crowdedOut;
      return;
    }
    row.laneEnds.resize(std::max(row.laneEnds.size(), lane + 1));
    row.laneEnds[lane] = block.box.right();
    block.box.y = kHoursHeight + static_cast<double>(lane) * kLaneHeight;
    row.timeline.blocks.push_back(block);
  }

  void addHours(TimelineRow& row) const {
    const int64_t step = rowSeconds_ == kDay           ? 2 * kHour
                         : rowSeconds_ == kShortestRow ? kHour / 2
                                                       : kHour;
    for (int64_t second = 0; second < rowSeconds_; second += step) {
      row.hours.push_back({xOf(second), row.start + second});
    }
  }

  int64_t rowSeconds_;
  std::map<StreamTime, Row> rows_;
};

void moveDown(TimelineRow& row, double y) {
  row.box.y += y;
  for (EventBlock& block : row.blocks) {
    block.box.y += y;
  }
}

}  // namespace

std::vector<TimelineSheet> layoutTimeline(const std::vector<Event>& events,
                                          std::optional<StreamTime> clock) {
  std::vector<TimelineSheet> sheets;
  if (events.empty()) {
    return sheets;
  }
  RowBuilder builder(rowSecondsFor(events));
  for (size_t place = 0; place < events.size(); ++place) {
    builder.add(events[place], place);
  }
  for (TimelineRow& row : builder.finish(clock)) {
    if (sheets.empty() || sheets.back().height + row.box.height > kSheetHeight) {
      sheets.emplace_back();
    }
    TimelineSheet& sheet = sheets.back();
    moveDown(row, sheet.height);
    sheet.height += row.box.height;
    sheet.rows.push_back(std::move(row));
  }
  return sheets;
}

}  // namespace tevra::tools::report
