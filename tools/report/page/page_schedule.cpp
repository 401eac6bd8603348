#include "tools/report/page/page_sections.h"

#include <algorithm>
#include <string>
#include <utility>

#include "tools/report/page/page_words.h"
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

bool hasEvents(const Service& service) {
  return !service.events.empty() || service.timelessEvents != 0;
}

void note(Markup& markup, const std::string& text) {
  markup.leaf("p", {{"class", "note"}}, text);
}

/** Every row is a picture of its own, so that a page of paper may end between any two. */
void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup) {
  const auto scroller = markup.scroller("Events of " + serviceText(service.serviceId));
  RowPicture picture(service.events, clock, markup);
  std::string day;
  for (const TimelineRow& row : layoutTimeline(service.events, clock)) {
    const std::string before = std::exchange(day, dayText(row.start));
    picture.draw(row, before == day);
  }
}

void legend(Markup& markup) {
  const auto list = markup.open("ul", {{"class", "legend events-legend"}});
  const auto entry = [&markup](const std::string& swatch, const std::string& text) {
    const auto item = markup.open("li");
    markup.leaf("i", {{"class", "event-swatch " + swatch}}, "");
    markup.text(text);
  };
  for (const char* place : {"present", "following", "schedule"}) {
    entry(place, place);
  }
  entry("now", "the stream's clock at its end");
}

void eventsInWords(const std::vector<Event>& events, Markup& markup) {
  const auto details = markup.open("details");
  markup.leaf("summary", {},
              events.size() == 1 ? "The event in words"
                                 : "All " + counted(events.size(), "event") + " in words");
  const auto table = markup.open("table", {{"class", "events"}});
  const auto body = markup.open("tbody");
  for (const Event& event : events) {
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

void serviceEvents(const Service& service, std::optional<StreamTime> clock, Markup& markup) {
  const auto section = markup.open("section", {{"class", "schedule"}});
  {
    const auto heading = markup.open("h3");
    markup.leaf("bdi", {}, nameOf(service));
    markup.leaf("small", {},
                serviceText(service.serviceId) + " · " + counted(service.events.size(), "event"));
  }
  if (!service.events.empty()) {
    drawTimeline(service, clock, markup);
  }
  if (service.timelessEvents != 0) {
    note(markup, counted(service.timelessEvents, "event") +
                     " without a start time and duration that make sense: not shown.");
  }
  if (!service.events.empty()) {
    eventsInWords(service.events, markup);
  }
}

void servicesWithoutEvents(const Report& report, Markup& markup) {
  if (std::all_of(report.services.begin(), report.services.end(), hasEvents)) {
    return;
  }
  const auto line = markup.open("p", {{"class", "note"}});
  const char* before = "Without events: ";
  for (const Service& service : report.services) {
    if (!hasEvents(service)) {
      markup.text(before);
      markup.leaf("bdi", {}, nameOf(service));
      before = ", ";
    }
  }
}

}  // namespace

void scheduleSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "schedule-section"}});
  markup.leaf("h2", {}, "Event schedule");
  if (std::none_of(report.services.begin(), report.services.end(), hasEvents)) {
    note(markup, "The EITs of this stream hold no event.");
    return;
  }
  note(markup, "Times are UTC, as the stream has them.");
  legend(markup);
  for (const Service& service : report.services) {
    if (hasEvents(service)) {
      serviceEvents(service, report.lastClock, markup);
    }
  }
  servicesWithoutEvents(report, markup);
}

}  // namespace tevra::tools::report
