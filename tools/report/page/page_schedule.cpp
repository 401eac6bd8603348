#include "tools/report/page/page_schedule.h"

#include <algorithm>
#include <string>

#include "tools/report/facts/stream_time.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/timeline_picture.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

bool hasEvents(const Service& service) {
  return !service.events.empty() || service.timelessEvents != 0;
}

void note(Markup& markup, const std::string& text) {
  markup.leaf("p", {{"class", "note"}}, text);
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
  drawTimeline(service, clock, markup);
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
