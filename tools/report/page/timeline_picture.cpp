#include "tools/report/page/timeline_picture.h"

#include <string>

#include "tools/report/page/svg.h"
#include "tools/report/page/text_fit.h"
#include "tools/report/page/timeline_layout.h"
#include "tools/text/dvb_time.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

constexpr double kFont = 12;
constexpr double kBlockPadding = 6;
constexpr double kBlockBaseLine = 15.5;

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

  void draw() {
    for (const TimelineSheet& sheet : layoutTimeline(service_.events, clock_)) {
      const auto scroller =
          svg_.scroller("Events of service " + std::to_string(service_.serviceId));
      const auto picture = svg_.picture({{"class", "timeline"},
                                         {"role", "img"},
                                         {"aria-label", counted(service_.events.size(), "event")}},
                                        0, sheet.height);
      std::string day;
      for (const TimelineRow& row : sheet.rows) {
        drawRow(row, day);
      }
    }
  }

 private:
  void drawRow(const TimelineRow& row, std::string& day) {
    const auto group = svg_.group({{"class", "day"}});
    const double top = row.box.y;
    if (dayText(row.start) != day) {
      day = dayText(row.start);
      svg_.text(0, top + kHoursHeight + kBlockBaseLine, "date", day);
    }
    const Box field = {kRowLabelWidth, top + kHoursHeight, kPictureWidth - kRowLabelWidth - 4,
                       row.box.height - kHoursHeight - 5};
    svg_.rect(field, "field", 3);
    for (const HourMark& hour : row.hours) {
      svg_.line(hour.x, top + 12, hour.x, field.bottom(), "hour");
      svg_.text(hour.x + 4, top + 12, "hour-text", clockText(hour.time));
    }
    if (row.clock) {
      drawClock(*row.clock, top, field.bottom());  // behind the names
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

  void drawClock(double x, double top, double bottom) {
    const auto group = svg_.group({{"class", "clock"}});
    svg_.title("The stream's clock at its end: " + dateAndTime(*clock_) + " UTC");
    svg_.line(x, top + 8, x, bottom + 3, "now");
    svg_.circle(x, top + 8, 3.5, "now-dot");
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
  Timeline(service, clock, markup).draw();
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
