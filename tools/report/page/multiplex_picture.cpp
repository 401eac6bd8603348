#include "tools/report/page/page_sections.h"

#include <algorithm>
#include <string>

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/card.h"
#include "tools/report/page/multiplex_folds.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/multiplex_sides.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/svg.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

void drawHeadings(const Report& report, Svg& svg) {
  constexpr double kLine = 16;
  const auto picture = svg.picture({{"class", "headings"}}, 0, kHeadingsHeight);
  svg.text(kInset, kLine, "heading", "Input");
  if (report.outputs() == 0) {
    return;
  }
  svg.text((kInset + kInputWidth + kOutputLeft) / 2, kLine, "heading", "PID map",
           Svg::Anchor::kMiddle);
  svg.text(kOutputLeft, kLine, "heading", "Outputs, one per service");
}

bool hasFaultyPid(const Report& report) {
  return std::any_of(report.pids.begin(), report.pids.end(),
                     [](const auto& entry) { return entry.second.isFaulty(); });
}

/** How to read the picture: a sample and a line for all that it has. */
void drawKey(const Report& report, const MultiplexLayout& layout, Svg& svg) {
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
  const auto most = static_cast<uint64_t>(layout.fullRate);
  const std::string rate = rateText(report, most);
  svg.rect({x, y - 4, kSampleWidth, 8}, "bar", 2);
  entry("a whole bar: the busiest PID, stuffing aside, " +
        (rate.empty() ? counted(most, "packet") : rate));
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

/** What leads from a PID of the input to one of an output; dashed where no packets do. */
void drawLink(const Report& report, const MultiplexLayout& layout, const Link& link, Svg& svg) {
  const Band& fromBand = layout.bands[link.fromBand];
  const Box& from = fromBand.inputRows[link.fromRow];
  const Box& to = layout.bands[link.toBand].outputRows[link.toRow];
  const InputStream& source = fromBand.streams[link.fromRow];
  const OutputStream& target = report.services[link.toBand].output->streams[link.toRow];
  const uint64_t packets = report.countOf(source.pid).packets;
  const std::string dashed = target.made || packets == 0 ? " dashed" : "";
  const auto group = svg.group({{"class", "link part k-" + kindWord(source.kind) + dashed},
                                {"data-s", std::to_string(link.toBand)},
                                {"data-from", std::to_string(source.pid)},
                                {"data-to", std::to_string(target.outputPid)}});
  svg.title("Input PID " + std::to_string(source.pid) + " to output PID " +
            std::to_string(target.outputPid) + "\n" +
            (target.made ? "rewritten by the daemon" : amountText(report, packets)));
  svg.ribbon(from.right(), from.middle(), to.x, to.middle(), link.thickness);
}

/** A picture of its own, so that a page of paper may end below it. Links leave it. */
void drawBand(const Report& report, const MultiplexLayout& layout, size_t place, Svg& svg) {
  const Band& band = layout.bands[place];
  const auto picture = svg.picture({}, band.top, band.height);
  for (const Link& link : layout.links) {
    if (link.toBand == place) {
      drawLink(report, layout, link, svg);
    }
  }
  drawInput(report, band, layout.fullRate, svg);
  drawOutput(report, band, svg);
  if (layout.key && place + 1 == layout.bands.size()) {
    drawKey(report, layout, svg);
  }
}

void drawPicture(const Report& report, Markup& markup) {
  const MultiplexLayout layout = layoutMultiplex(report);
  const auto scroller = markup.scroller("The multiplex");
  const auto bands = markup.open(
      "div", {{"class", "multiplex"}, {"role", "group"}, {"aria-label", "Input PIDs, outputs"}});
  Svg svg(markup);
  drawHeadings(report, svg);
  for (size_t place = 0; place < layout.bands.size(); ++place) {
    if (layout.bands[place].height > 0) {
      drawBand(report, layout, place, svg);
    }
  }
}

}  // namespace

void multiplexSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "multiplex-section"}});
  markup.leaf("h2", {}, "Multiplex");
  if (report.services.empty()) {
    markup.leaf("p", {{"class", "note"}}, "Neither PAT nor SDT of this stream lists a service.");
  } else if (report.outputs() == 0) {
    markup.leaf("p", {{"class", "note"}}, "No service has an output.");
  }
  if (std::any_of(report.services.begin(), report.services.end(),
                  [&](const Service& service) { return !isEmpty(report, service); })) {
    markup.leaf("p", {{"class", "note choice"}},
                "Choose a service to light up its PIDs; choose it again, or press Escape, to see "
                "all.");
  }
  drawPicture(report, markup);
  drawFolds(report, markup);
}

}  // namespace tevra::tools::report
