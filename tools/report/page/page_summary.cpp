#include "tools/report/page/page_sections.h"

#include <algorithm>
#include <map>
#include <vector>

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/figures.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/svg.h"
#include "tools/text/dvb_time.h"
#include "tools/text/standard_streams.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

std::string idOrNone(std::optional<int> id) {
  return id ? idText(*id) : "not in the stream";
}

std::string networkText(const Report& report) {
  return idOrNone(report.networkId) + (report.networkName.empty() ? "" : " " + report.networkName);
}

std::string clockText(const Report& report) {
  if (!report.firstClock || !report.lastClock) {
    return "no TDT or TOT";
  }
  const std::string first = dateAndTime(*report.firstClock);
  const std::string last = dateAndTime(*report.lastClock);
  if (first == last) {
    return first + " UTC";
  }
  const bool sameDay = *report.firstClock / kDay == *report.lastClock / kDay;
  return first + " to " + (sameDay ? last.substr(last.find(' ') + 1) : last) + " UTC";
}

void figure(Markup& markup, const std::string& name, const std::string& value) {
  const auto pair = markup.open("div");
  markup.leaf("dt", {}, name);
  const auto cell = markup.open("dd");
  markup.leaf("bdi", {}, value);
}

void figures(const Report& report, Markup& markup) {
  const auto list = markup.open("dl", {{"class", "figures"}});
  const auto rate = report.bitRate(report.packets);
  figure(markup, "Duration", report.seconds ? lengthText(*report.seconds) : "unknown: no PCR");
  figure(markup, "Bit rate", rate ? bitRateText(*rate) : "unknown: no PCR");
  figure(markup, "Packets", groupedText(report.packets));
  figure(markup, "Services",
         std::to_string(report.services.size()) + ", " + counted(report.outputs(), "output"));
  figure(markup, "PIDs", std::to_string(report.pids.size()));
  figure(markup, "Tables fed", groupedText(report.tablesSent));
  figure(markup, "Transport stream", idOrNone(report.transportStreamId));
  figure(markup, "Original network", idOrNone(report.originalNetworkId));
  figure(markup, "Network", networkText(report));
  figure(markup, "Clock", clockText(report));
}

/** What could not be looked at: no word of it would be a word too many. */
std::string unmeasured(const Report& report) {
  const auto count = std::count_if(
      report.checks.begin(), report.checks.end(),
      [](const StreamCheck& check) { return check.result == CheckResult::kNotMeasurable; });
  return count == 0 ? "."
                    : "; " + counted(static_cast<uint64_t>(count), "check") + " of " +
                          std::to_string(report.checks.size()) + " not measurable.";
}

void faults(const Report& report, Markup& markup) {
  const std::vector<std::string> lines = report.faultLines();
  if (lines.empty()) {
    markup.leaf("p", {{"class", "sound"}}, "No fault seen" + unmeasured(report));
    return;
  }
  const auto box = markup.open("div", {{"class", "faults"}});
  markup.leaf("h2", {}, counted(lines.size(), "thing") + " to look at");
  const auto list = markup.open("ul");
  for (const std::string& line : lines) {
    markup.leaf("li", {}, line);
  }
}

/** One bar for the whole bit rate, which is the legend of the colours, too. */
void strip(const Report& report, Markup& markup) {
  constexpr double kHeight = 18;
  const std::map<StreamKind, uint64_t> sums = report.packetsByKind();
  {
    Svg svg(markup);
    const auto picture = svg.picture(
        {{"class", "strip"}, {"preserveAspectRatio", "none"}, {"aria-hidden", "true"}}, 0, kHeight);
    double x = 0;
    for (const auto& [kind, packets] : sums) {
      const double width = kPictureWidth * report.share(packets);
      svg.rect({x, 0, width, kHeight}, "bar k-" + kindWord(kind));
      x += width;
    }
  }
  const auto list = markup.open("ul", {{"class", "legend"}});
  for (const auto& [kind, packets] : sums) {
    const auto item = markup.open("li", {{"class", "k-" + kindWord(kind)}});
    markup.leaf("i", {{"class", "swatch"}}, "");
    markup.text(kindName(kind) + " ");
    markup.leaf("span", {{"class", "figure"}}, shareText(report.share(packets)));
  }
}

}  // namespace

void summarySection(const Report& report, const std::string& title, Markup& markup) {
  const auto header = markup.open("header");
  {
    const auto heading = markup.open("h1");
    markup.leaf("bdi", {}, title);
  }
  const std::string file = sourceName(report.file);
  if (title != file) {
    const auto line = markup.open("p", {{"class", "file"}});
    markup.leaf("bdi", {}, file);
  }
  faults(report, markup);
  figures(report, markup);
  strip(report, markup);
}

}  // namespace tevra::tools::report
