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

void drawBlock(const EventBlock& block, const Event& event, Svg& svg) {
  const auto group = svg.group({{"class", "event " + placeOf(event)}});
  svg.title(nameOf(event) + "\n" + dayText(event.start) + " " + spanOf(event) + "\nevent " +
            std::to_string(event.eventId) + ", " + placeOf(event) +
            (block.began ? "\nbegan before" : "") + (block.goesOn ? "\ngoes on" : ""));
  svg.rect(block.box, "block", 3);
  svg.text(block.box.x + kBlockPadding, block.box.y + kBlockBaseLine, "event-name",
           fitted(nameOf(event), block.box.width - 2 * kBlockPadding, kFont));
}

void drawClock(StreamTime clock, double x, double bottom, Svg& svg) {
  const auto group = svg.group({{"class", "clock"}});
  svg.title("The stream's clock at its end: " + dateAndTime(clock) + " UTC");
  svg.line(x, 8, x, bottom + 3, "now");
  svg.circle(x, 8, 3.5, "now-dot");
}

/** `isSameDay`: as the row before. */
void drawRow(const TimelineRow& row, const std::vector<Event>& events,
             std::optional<StreamTime> clock, bool isSameDay, Svg& svg) {
  const std::string label =
      dayText(row.start) + " " + clockText(row.start) + ", " + counted(row.blocks.size(), "event");
  const auto picture =
      svg.picture({{"class", "timeline"}, {"role", "img"}, {"aria-label", label}}, 0, row.height);
  const Box field = {kRowLabelWidth, kHoursHeight, kPictureWidth - kRowLabelWidth - 4,
                     row.height - kHoursHeight - 5};
  svg.text(0, field.y + kBlockBaseLine, isSameDay ? "date again" : "date", dayText(row.start));
  svg.rect(field, "field", 3);
  for (const HourMark& hour : row.hours) {
    svg.line(hour.x, kHourBaseLine, hour.x, field.bottom(), "hour");
    svg.text(hour.x + 4, kHourBaseLine, "hour-text", clockText(hour.time));
  }
  if (clock && row.clock) {
    drawClock(*clock, *row.clock, field.bottom(), svg);  // behind the names
  }
  for (const EventBlock& block : row.blocks) {
    drawBlock(block, events[block.event], svg);
  }
  if (row.crowdedOut != 0) {
    svg.text(0, field.bottom() - 4, "muted", std::to_string(row.crowdedOut) + " more");
  }
}

bool hasEvents(const Service& service) {
  return !service.events.empty() || service.timelessEvents != 0;
}

void note(Markup& markup, const std::string& text) {
  markup.leaf("p", {{"class", "note"}}, text);
}

/** Every row is a picture of its own, so that a page of paper may end between any two. */
void drawTimeline(const Service& service, std::optional<StreamTime> clock, Markup& markup) {
  const auto scroller = markup.scroller("Events of " + serviceText(service.serviceId));
  Svg svg(markup);
  std::string day;
  for (const TimelineRow& row : layoutTimeline(service.events, clock)) {
    const std::string before = std::exchange(day, dayText(row.start));
    drawRow(row, service.events, clock, /*isSameDay=*/before == day, svg);
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
