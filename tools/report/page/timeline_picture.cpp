#include "tools/report/page/timeline_picture.h"

#include <string>
#include <utility>

#include "tools/report/facts/stream_time.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/svg.h"
#include "tools/report/page/text_fit.h"
#include "tools/report/page/timeline_layout.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

constexpr double kFont = 12;
constexpr double kBlockPadding = 6;
constexpr double kBlockBaseLine = 15.5;
constexpr double kHourBaseLine = 12;

std::string spanOf(const Event& event) {
  return clockText(event.start) + " to " + clockText(event.start + event.duration) + " UTC, " +
         durationText(event.duration);
}

/** Draws rows of one service. */
class RowPicture {
 public:
  RowPicture(const std::vector<Event>& events, std::optional<StreamTime> clock, Markup& markup)
      : events_(events), clock_(clock), svg_(markup) {}

  /** `isSameDay`: as the row before. */
  void draw(const TimelineRow& row, bool isSameDay) {
    const std::string label = dayText(row.start) + " " + clockText(row.start) + ", " +
                              counted(row.blocks.size(), "event");
    const auto picture = svg_.picture(
        {{"class", "timeline"}, {"role", "img"}, {"aria-label", label}}, 0, row.height);
    const Box field = {kRowLabelWidth, kHoursHeight, kPictureWidth - kRowLabelWidth - 4,
                       row.height - kHoursHeight - 5};
    svg_.text(0, field.y + kBlockBaseLine, isSameDay ? "date again" : "date", dayText(row.start));
    svg_.rect(field, "field", 3);
    for (const HourMark& hour : row.hours) {
      svg_.line(hour.x, kHourBaseLine, hour.x, field.bottom(), "hour");
      svg_.text(hour.x + 4, kHourBaseLine, "hour-text", clockText(hour.time));
    }
    if (row.clock) {
      drawClock(*row.clock, field.bottom());  // behind the names
    }
    for (const EventBlock& block : row.blocks) {
      drawBlock(block);
    }
    if (row.crowdedOut != 0) {
      svg_.text(0, field.bottom() - 4, "muted", std::to_string(row.crowdedOut) + " more");
    }
  }

 private:
  void drawBlock(const EventBlock& block) {
    const Event& event = events_[block.event];
    const auto group = svg_.group({{"class", "event " + placeOf(event)}});
    svg_.title(nameOf(event) + "\n" + dayText(event.start) + " " + spanOf(event) + "\nevent " +
               std::to_string(event.eventId) + ", " + placeOf(event) +
               (block.began ? "\nbegan before" : "") + (block.goesOn ? "\ngoes on" : ""));
    svg_.rect(block.box, "block", 3);
    svg_.text(block.box.x + kBlockPadding, block.box.y + kBlockBaseLine, "event-name",
              fitted(nameOf(event), block.box.width - 2 * kBlockPadding, kFont));
  }

  void drawClock(double x, double bottom) {
    const auto group = svg_.group({{"class", "clock"}});
    svg_.title("The stream's clock at its end: " + dateAndTime(*clock_) + " UTC");
    svg_.line(x, 8, x, bottom + 3, "now");
    svg_.circle(x, 8, 3.5, "now-dot");
  }

  const std::vector<Event>& events_;
  std::optional<StreamTime> clock_;
  Svg svg_;
};

}  // namespace

void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup) {
  if (service.events.empty()) {
    return;
  }
  const auto scroller = markup.scroller("Events of " + serviceText(service.serviceId));
  RowPicture picture(service.events, clock, markup);
  std::string day;
  for (const TimelineRow& row : layoutTimeline(service.events, clock)) {
    const std::string before = std::exchange(day, dayText(row.start));
    picture.draw(row, before == day);
  }
}

}  // namespace tevra::tools::report
