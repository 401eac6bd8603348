#include "tools/report/page/multiplex_picture.h"

#include <algorithm>
#include <string>

#include "tools/report/page/card.h"
#include "tools/report/page/figures.h"
#include "tools/report/page/input_side.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/output_side.h"
#include "tools/report/page/pid_links.h"
#include "tools/report/page/svg.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

void headings(const Report& report, Svg& svg) {
  constexpr double kLine = 16;
  const auto group = svg.group({{"class", "headings"}});
  svg.text(kInset, kLine, "heading", "Input");
  if (report.services.empty()) {
    return;
  }
  svg.text((kInset + kInputWidth + kOutputLeft) / 2, kLine, "heading", "PID map",
           Svg::Anchor::kMiddle);
  svg.text(kOutputLeft, kLine, "heading", "Outputs, one per service");
  if (report.outputs() == 0) {
    svg.text(kOutputLeft, 54, "facts", "No service has a PMT: there is nothing to make");
    svg.text(kOutputLeft, 72, "facts", "a single-programme stream of.");
  }
}

std::string fullRateText(const Report& report, double fullRate) {
  const auto packets = static_cast<uint64_t>(fullRate);
  const auto rate = report.bitRate(packets);
  return rate ? bitRateText(*rate) : counted(packets, "packet");
}

bool hasFaultyPid(const Report& report) {
  return std::any_of(report.pids.begin(), report.pids.end(),
                     [](const auto& entry) { return entry.second.isFaulty(); });
}

/** How to read the picture: a sample and a line for all that it has. */
void key(const Report& report, const MultiplexLayout& layout, Svg& svg) {
  constexpr double kSampleWidth = 30;
  const auto group = svg.group({{"class", "key k-tables"}});
  const double x = layout.key->x;
  double y = layout.key->y + 21;
  const auto entry = [&](const std::string& text) {
    svg.text(x + kSampleWidth + 12, y + kBaseLine, "facts", text);
    y += 24;
  };
  const auto link = [&](const std::string& classes, double thickness) {
    const auto sample = svg.group({{"class", classes}});
    svg.ribbon(x, y, x + kSampleWidth, y, thickness);
  };
  svg.rect({x, y - 4, kSampleWidth, 8}, "bar", 2);
  entry("a whole bar: the busiest PID, stuffing aside, " + fullRateText(report, layout.fullRate));
  if (!layout.links.empty()) {
    link("key-link", 6);
    entry("carried to an output, the thicker the more bits");
    link("key-link dashed", 1.25);
    entry("rewritten by the daemon, or without packets");
    svg.rect({x + 13, y - 5.5, 4, 11}, "swatch made", 2);
    entry("packets that the daemon makes");
  }
  if (hasFaultyPid(report)) {
    svg.circle(x + kSampleWidth / 2, y, 3, "fault");
    entry("continuity, CRC or transport errors on this PID");
  }
}

}  // namespace

void drawMultiplex(const Report& report, Markup& markup) {
  const MultiplexLayout layout = layoutMultiplex(report);
  const auto scroller = markup.scroller("The multiplex");
  Svg svg(markup);
  const auto picture = svg.picture(
      {{"class", "multiplex"}, {"role", "group"}, {"aria-label", "Input PIDs, outputs"}},
      layout.height);
  headings(report, svg);
  drawLinks(report, layout, svg);
  for (const Band& band : layout.bands) {
    drawInput(report, band, layout.fullRate, svg);
    drawOutput(report, band, svg);
  }
  if (layout.key) {
    key(report, layout, svg);
  }
}

}  // namespace tevra::tools::report
