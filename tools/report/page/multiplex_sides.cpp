#include "tools/report/page/multiplex_sides.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tools/report/page/card.h"
#include "tools/report/page/figures.h"
#include "tools/report/page/page_words.h"
#include "tools/si/table_identity.h"
#include "tools/tables/table_fields.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Anchor = Svg::Anchor;

constexpr double kFiguresWidth = 100;
constexpr double kVersionsWidth = 128;

// Columns, from the left side of the card.
constexpr double kBar = 342;
constexpr double kBarWidth = 38;
constexpr double kRateEnd = 456;

std::string titleOf(const Report& report, const InputStream& stream) {
  const PidCount count = report.countOf(stream.pid);
  const auto orNothing = [](uint64_t number, const char* noun) {
    return number == 0 ? std::string() : counted(number, noun);
  };
  return joinedNonEmpty(
      {"PID " + idText(stream.pid),
       joinedNonEmpty({stream.description, joined(stream.languages, " "),
                       stream.hasPcr ? "carries the PCR" : ""},
                      ", "),
       amountText(report, count.packets), orNothing(count.continuityErrors, "continuity error"),
       orNothing(count.scrambled, "scrambled packet"),
       orNothing(count.transportErrors, "packet flagged as damaged"),
       orNothing(count.crcErrors, "CRC error")},
      "\n");
}

/** Stuffing may be more than a bar can show: then the bar has a gap in it. */
void drawBar(const Box& row, double share, Svg& svg) {
  const Box track = {row.x + kBar, row.middle() - 4, kBarWidth, 8};
  svg.rect(track, "track", 2);
  svg.rect({track.x, track.y, std::max(kBarWidth * std::min(share, 1.0), 1.0), track.height}, "bar",
           2);
  if (share > 1) {
    svg.rect({track.x + kBarWidth * 0.7, track.y - 1, 3, track.height + 2}, "gap");
  }
}

void drawAmount(const Report& report, const Box& row, const PidCount& count, Svg& svg) {
  const double y = row.middle() + kBaseLine;
  svg.text(row.x + kRateEnd, y, "rate", rateText(report, count.packets), Anchor::kEnd);
  svg.text(row.right() - kCardPadding, y, "share", shareText(report.share(count.packets)),
           Anchor::kEnd);
  if (count.isFaulty()) {
    svg.circle(row.x + 6, row.middle(), 3, "fault");
  }
}

void drawRow(const Report& report, const Band& band, size_t place, double fullRate, Svg& svg) {
  const Box& box = band.inputRows[place];
  const InputStream& stream = band.streams[place];
  const PidCount count = report.countOf(stream.pid);
  CardRow row(svg, box,
              {stream.pid, stream.kind, stream.description, stream.languages,
               titleOf(report, stream), band.inputServices[place], /*made=*/false,
               /*silent=*/count.packets == 0});
  if (stream.hasPcr) {
    row.chip("PCR");
  }
  if (count.packets == 0) {
    svg.text(box.right() - kCardPadding, box.middle() + kBaseLine, "muted", "no packets",
             Anchor::kEnd);
    return;
  }
  drawBar(box, static_cast<double>(count.packets) / fullRate, svg);
  drawAmount(report, box, count, svg);
}

CardHead headOf(const Report& report, uint64_t packets, const std::string& name,
                const std::string& facts) {
  const std::string share = shareText(report.share(packets));
  const std::string rate = rateText(report, packets);
  return {name, facts, rate.empty() ? share : rate, rate.empty() ? "" : share, kFiguresWidth};
}

void drawServiceHead(const Report& report, uint64_t packets, const Service& service, Card& card,
                     Svg& svg) {
  const std::string facts = joinedNonEmpty({serviceText(service.serviceId), service.typeName,
                                            service.provider, service.hasPmt ? "" : "no PMT"},
                                           " · ");
  const auto button = svg.group({{"class", "head"},
                                 {"role", "button"},
                                 {"tabindex", "0"},
                                 {"aria-pressed", "false"},
                                 {"aria-label", nameOf(service) + ", " + facts}});
  svg.title(nameOf(service) + "\n" + facts + "\n" + amountText(report, packets));
  card.head(headOf(report, packets, nameOf(service), facts));
}

CardHead headOf(const Output& output) {
  std::vector<std::string> versions;
  for (const TableFact& table : output.tables) {
    versions.push_back(tableName(table.table) + " " +
                       std::to_string(versionOf(table.table).value_or(0)));
  }
  const std::string facts = serviceText(output.serviceId) + " · transport stream " +
                            std::to_string(output.transportStreamId);
  return {output.name, facts, "", joined(versions, " · "), kVersionsWidth};
}

std::string titleOf(const OutputStream& stream) {
  const std::string source = stream.made       ? "made by the daemon"
                             : stream.inputPid ? "from input PID " + idText(*stream.inputPid)
                                               : "the daemon does not know its input PID";
  return joinedNonEmpty({"Output PID " + idText(stream.outputPid),
                         joinedNonEmpty({stream.description, joined(stream.languages, " "),
                                         joined(stream.attributes, ", ")},
                                        ", "),
                         source},
                        "\n");
}

}  // namespace

void drawInput(const Report& report, const Band& band, double fullRate, Svg& svg) {
  Card card(svg, "input", band.input, band.service);
  uint64_t packets = 0;
  for (const InputStream& stream : band.streams) {
    packets += report.countOf(stream.pid).packets;
  }
  if (band.service) {
    drawServiceHead(report, packets, report.services[*band.service], card, svg);
  } else {
    card.head(headOf(report, packets, "Of no service",
                     "tables, EMMs, PIDs in no PAT, CAT or PMT, stuffing"));
  }
  for (size_t place = 0; place < band.inputRows.size(); ++place) {
    drawRow(report, band, place, fullRate, svg);
  }
}

void drawOutput(const Report& report, const Band& band, Svg& svg) {
  if (!band.output) {
    return;
  }
  const Output& output = *report.services[*band.service].output;
  Card card(svg, "output", *band.output, band.service);
  card.head(headOf(output));
  for (size_t place = 0; place < output.streams.size(); ++place) {
    const OutputStream& stream = output.streams[place];
    CardRow row(svg, band.outputRows[place],
                {stream.outputPid,
                 stream.kind,
                 stream.description,
                 stream.languages,
                 titleOf(stream),
                 {*band.service},
                 stream.made,
                 /*silent=*/false});
    for (const std::string& attribute : stream.attributes) {
      row.chip(attribute);
    }
  }
}

}  // namespace tevra::tools::report
