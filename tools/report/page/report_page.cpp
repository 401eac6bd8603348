#include "tools/report/page/report_page.h"

#include <filesystem>

#include "tools/report/page/markup.h"
#include "tools/report/page/multiplex_picture.h"
#include "tools/report/page/page_summary.h"
#include "tools/report/page/page_tables.h"
#include "tools/report/page/report_assets.h"
#include "tools/report/page/timeline_picture.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

/** Nothing may be loaded, whatever a stream smuggles into the page. */
constexpr const char* kPolicy =
    "default-src 'none'; style-src 'unsafe-inline'; script-src 'unsafe-inline'; img-src data:";

void head(const std::string& title, Markup& markup) {
  const auto element = markup.open("head");
  markup.raw("<meta charset=\"utf-8\">\n");
  markup.mark("meta", {{"http-equiv", "Content-Security-Policy"}, {"content", kPolicy}});
  markup.mark("meta", {{"name", "viewport"}, {"content", "width=device-width, initial-scale=1"}});
  markup.mark("meta", {{"name", "color-scheme"}, {"content", "light dark"}});
  markup.mark("link", {{"rel", "icon"}, {"href", "data:,"}});
  markup.leaf("title", {}, title);
  markup.raw("<style>\n");
  markup.raw(kStyleSheet);
  markup.raw("</style>\n");
}

void multiplexSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "multiplex-section"}});
  markup.leaf("h2", {}, "Multiplex");
  if (report.services.empty()) {
    markup.leaf("p", {{"class", "note"}}, "Neither PAT nor SDT of this stream lists a service.");
  } else {
    markup.leaf("p", {{"class", "note choice"}},
                "Choose a service to light up its PIDs; choose it again, or press Escape, to see "
                "all.");
  }
  drawMultiplex(report, markup);
}

std::string titleOf(const Service& service) {
  return service.name.empty() ? "Service " + std::to_string(service.serviceId) : service.name;
}

void serviceEvents(const Service& service, const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "schedule"}});
  {
    const auto heading = markup.open("h3");
    markup.leaf("bdi", {}, titleOf(service));
    markup.leaf("small", {},
                "service " + std::to_string(service.serviceId) + " · " +
                    counted(service.events.size(), "event"));
  }
  drawTimeline(service, report.lastClock, markup);
}

void eventLegend(Markup& markup) {
  const auto list = markup.open("ul", {{"class", "legend events-legend"}});
  for (const char* place : {"present", "following", "schedule"}) {
    const auto item = markup.open("li");
    markup.leaf("i", {{"class", std::string("event-swatch ") + place}}, "");
    markup.text(place);
  }
  const auto item = markup.open("li");
  markup.leaf("i", {{"class", "event-swatch now"}}, "");
  markup.text("the stream's clock at its end");
}

void scheduleSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "schedule-section"}});
  markup.leaf("h2", {}, "Event schedule");
  std::vector<std::string> without;
  size_t shown = 0;
  for (const Service& service : report.services) {
    const bool hasEvents = !service.events.empty() || service.timelessEvents != 0;
    shown += hasEvents ? 1 : 0;
    if (!hasEvents) {
      without.push_back(titleOf(service));
    }
  }
  if (shown == 0) {
    markup.leaf("p", {{"class", "note"}}, "The EITs of this stream hold no event.");
    return;
  }
  markup.leaf("p", {{"class", "note"}}, "Times are UTC, as the stream has them.");
  eventLegend(markup);
  for (const Service& service : report.services) {
    if (!service.events.empty() || service.timelessEvents != 0) {
      serviceEvents(service, report, markup);
    }
  }
  if (!without.empty()) {
    const auto note = markup.open("p", {{"class", "note"}});
    markup.text("Without events: ");
    for (size_t place = 0; place < without.size(); ++place) {
      markup.text(place == 0 ? "" : ", ");
      markup.leaf("bdi", {}, without[place]);
    }
  }
}

}  // namespace

std::string reportPage(const Report& report) {
  const std::string title =
      report.title.empty() ? std::filesystem::path(report.file).filename().string() : report.title;
  Markup markup;
  markup.raw("<!DOCTYPE html>\n");
  {
    const auto page = markup.open("html", {{"lang", "en"}});
    head(title, markup);
    const auto body = markup.open("body");
    {
      const auto main = markup.open("main");
      summarySection(report, title, markup);
      multiplexSection(report, markup);
      tablesSection(report, markup);
      scheduleSection(report, markup);
      markup.leaf("footer", {}, "tornelctl " TORNEL_VERSION " report");
    }
    markup.leaf("div", {{"id", "tip"}, {"role", "tooltip"}, {"hidden", ""}}, "");
    markup.raw("<script>\n");
    markup.raw(kScript);
    markup.raw("</script>\n");
  }
  return markup.take();
}

}  // namespace tevra::tools::report
