#include "tools/report/page/timeline_picture.h"

#include <string>
#include <utility>

#include "tools/report/facts/stream_time.h"
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

std::string nameOf(const Event& event) {
  return event.name.empty() ? "event " + std::to_string(event.eventId) : event.name;
}

std::string placeOf(const Event& event) {
  if (event.isPresent || event.isFollowing) {
    return event.isPresent ? "present" : "following";
  }
  return "schedule";
}

std::string spanOf(const Event& event) {
  return clockText(event.start) + " to " + clockText(event.start + event.duration) + " UTC, " +
         durationText(event.duration);
}

class Timeline {
 public:
  Timeline(const Service& service, std::optional<StreamTime> clock, Markup& markup)
      : service_(service), clock_(clock), svg_(markup) {}

  /** A picture for every row, so that a page of paper may end between any two. */
  void draw() {
    const auto scroller = svg_.scroller("Events of service " + std::to_string(service_.serviceId));
    std::string day;
    for (const TimelineRow& row : layoutTimeline(service_.events, clock_)) {
      const bool isSameDay = std::exchange(day, dayText(row.start)) == dayText(row.start);
      drawRow(row, isSameDay);
    }
  }

 private:
  void drawRow(const TimelineRow& row, bool isSameDay) {
    const std::string label = dayText(row.start) + " " + clockText(row.start) + ", " +
                              counted(row.blocks.size(), "event");
    const auto picture =
        svg_.picture({{"class", "timeline"}, {"role", "img"}, {"aria-label", label}}, row.height);
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

  void drawBlock(const EventBlock& block) {
    const Event& event = service_.events[block.event];
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

  const Service& service_;
  std::optional<StreamTime> clock_;
  Svg svg_;
};

void listEvents(const Service& service, Markup& markup) {
  const auto details = markup.open("details");
  markup.leaf("summary", {},
              service.events.size() == 1
                  ? "The event in words"
                  : "All " + counted(service.events.size(), "event") + " in words");
  const auto table = markup.open("table", {{"class", "events"}});
  const auto body = markup.open("tbody");
  for (const Event& event : service.events) {
    const auto row = markup.open("tr");
    markup.leaf("td", {{"class", "figure"}}, dayText(event.start) + " " + clockText(event.start));
    markup.leaf("td", {}, durationText(event.duration));
    const auto cell = markup.open("td");
    markup.leaf("bdi", {}, nameOf(event));
    if (placeOf(event) != "schedule") {
      markup.leaf("span", {{"class", "tag"}}, placeOf(event));
    }
  }
}

}  // namespace

void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup) {
  if (!service.events.empty()) {
    Timeline(service, clock, markup).draw();
  }
  if (service.timelessEvents != 0) {
    markup.leaf("p", {{"class", "note"}},
                counted(service.timelessEvents, "event") +
                    " without a start time and duration that make sense: not shown.");
  }
  if (!service.events.empty()) {
    listEvents(service, markup);
  }
}

}  // namespace tevra::tools::report
