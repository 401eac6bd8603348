#include "tools/report/page/multiplex_picture.h"

#include <algorithm>
#include <map>
#include <set>
#include <string>

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/figures.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/svg.h"
#include "tools/report/page/text_fit.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Anchor = Svg::Anchor;

constexpr double kFont = 12.5;
constexpr double kSmallFont = 11.5;
constexpr double kNameFont = 15 * 1.125;  // bold
constexpr double kBaseLine = 4.4;         // of a text, below the middle of its row
constexpr double kPadding = 14;
constexpr double kRadius = 7;

// Columns, from the left side of their card.
constexpr double kSwatch = 14;
constexpr double kPidEnd = 60;
constexpr double kHexPid = 66;
constexpr double kText = 120;
constexpr double kTextWidth = 126;
constexpr double kLanguage = 250;
constexpr double kLanguageWidth = 54;
constexpr double kPcrChip = 304;
constexpr double kBar = 342;
constexpr double kBarWidth = 38;
constexpr double kRateEnd = 456;

constexpr double kChipFont = 10;
constexpr double kChipHeight = 15;
constexpr double kChipGap = 4;

std::string joinedWith(const std::string& separator, const std::vector<std::string>& parts) {
  std::vector<std::string> said;
  std::copy_if(parts.begin(), parts.end(), std::back_inserter(said),
               [](const std::string& part) { return !part.empty(); });
  return joined(said, separator);
}

std::string nameOf(const Service& service) {
  return service.name.empty() ? "Service " + std::to_string(service.serviceId) : service.name;
}

class Picture {
 public:
  Picture(const Report& report, Markup& markup)
      : report_(report), svg_(markup), layout_(layoutMultiplex(report)) {
    for (const Link& link : layout_.links) {
      takers_[{link.fromBand, link.fromRow}].insert(link.toBand);
    }
  }

  void draw() {
    const auto scroller = svg_.scroller("The multiplex");
    const auto picture = svg_.picture(
        {{"class", "multiplex"}, {"role", "group"}, {"aria-label", "Input PIDs, outputs"}},
        layout_.height);
    headings();
    for (const Link& link : layout_.links) {
      drawLink(link);
    }
    for (size_t band = 0; band < layout_.bands.size(); ++band) {
      drawInput(band);
      drawOutput(band);
    }
    if (layout_.key) {
      drawKey(*layout_.key);
    }
  }

 private:
  void drawKey(const Box& box) {
    const auto group = svg_.group({{"class", "key k-tables"}});
    const double x = box.x;
    double y = box.y + 21;
    const auto entry = [&](const std::string& text) {
      svg_.text(x + 42, y + kBaseLine, "facts", text);
      y += 24;
    };
    svg_.rect({x, y - 4, 30, 8}, "bar", 2);
    entry("a whole bar: the busiest PID, stuffing aside, " + fullRateText());
    if (!layout_.links.empty()) {
      keyLink(x, y, "key-link", 6);
      entry("carried to an output, the thicker the more bits");
      keyLink(x, y, "key-link dashed", 1.25);
      entry("rewritten by the daemon, or without packets");
      svg_.rect({x + 13, y - 5.5, 4, 11}, "swatch made", 2);
      entry("packets that the daemon makes");
    }
    if (hasFaultyPid()) {
      svg_.circle(x + 15, y, 3, "fault");
      entry("continuity, CRC or transport errors on this PID");
    }
  }

  void keyLink(double x, double y, const std::string& classes, double thickness) {
    svg_.path("M" + coordinate(x) + " " + coordinate(y) + "h30",
              {{"class", classes}, {"stroke-width", coordinate(thickness)}});
  }

  [[nodiscard]] std::string fullRateText() const {
    const auto packets = static_cast<uint64_t>(layout_.fullRate);
    const auto rate = report_.bitRate(packets);
    return rate ? bitRateText(*rate) : counted(packets, "packet");
  }

  [[nodiscard]] bool hasFaultyPid() const {
    return std::any_of(report_.pids.begin(), report_.pids.end(),
                       [](const auto& entry) { return isFaulty(entry.second); });
  }

  static bool isFaulty(const PidCount& count) {
    return count.continuityErrors + count.transportErrors + count.crcErrors != 0;
  }

  void headings() {
    const auto group = svg_.group({{"class", "headings"}});
    const double middle = (kInset + kInputWidth + kOutputLeft) / 2;
    svg_.text(kInset, 16, "heading", "Input");
    if (report_.services.empty()) {
      return;
    }
    svg_.text(middle, 16, "heading", "PID map", Anchor::kMiddle);
    svg_.text(kOutputLeft, 16, "heading", "Outputs, one per service");
    const bool hasOutput = std::any_of(layout_.bands.begin(), layout_.bands.end(),
                                       [](const Band& band) { return band.output.has_value(); });
    if (!hasOutput) {
      svg_.text(kOutputLeft, 54, "facts", "No service has a PMT: there is nothing to make");
      svg_.text(kOutputLeft, 72, "facts", "a single-programme stream of.");
    }
  }

  // -- the left side

  void drawInput(size_t place) {
    const Band& band = layout_.bands[place];
    const auto card = svg_.group(cardAttributes("input", band));
    svg_.rect(band.input, "frame", kRadius);
    if (band.service) {
      serviceHead(band, *band.service);
    } else {
      othersHead(band);
    }
    const auto& streams = inputStreams(report_, band);
    for (size_t row = 0; row < streams.size(); ++row) {
      inputRow(band.inputRows[row], streams[row], takersOf(place, row));
    }
  }

  static Attributes cardAttributes(const std::string& side, const Band& band) {
    Attributes attributes = {{"class", "card part " + side}};
    if (band.service) {
      attributes.emplace_back("data-s", std::to_string(*band.service));
      attributes.emplace_back("data-service", std::to_string(*band.service));
    }
    return attributes;
  }

  void serviceHead(const Band& band, size_t place) {
    const Service& service = report_.services[place];
    const std::string facts =
        joinedWith(" · ", {"service " + std::to_string(service.serviceId), service.typeName,
                           service.provider, service.hasPmt ? "" : "no PMT"});
    const auto head = svg_.group({{"class", "head"},
                                  {"role", "button"},
                                  {"tabindex", "0"},
                                  {"aria-pressed", "false"},
                                  {"aria-label", nameOf(service) + ", " + facts}});
    uint64_t packets = 0;
    for (const InputStream& stream : service.streams) {
      packets += report_.countOf(stream.pid).packets;
    }
    svg_.title(nameOf(service) + "\n" + facts + "\n" + amount(packets));
    headTexts(band.input, nameOf(service), facts, packets);
  }

  void othersHead(const Band& band) {
    uint64_t packets = 0;
    for (const InputStream& stream : report_.others) {
      packets += report_.countOf(stream.pid).packets;
    }
    headTexts(band.input, "Of no service", "tables, EMMs, PIDs in no PAT, CAT or PMT, stuffing",
              packets);
  }

  void headTexts(const Box& card, const std::string& name, const std::string& facts,
                 uint64_t packets) {
    constexpr double kFigures = 100;
    const double room = card.width - 2 * kPadding - kFigures;
    const double end = card.right() - kPadding;
    svg_.rect({card.x + 1, card.y + 1, card.width - 2, kHeadHeight - 7}, "grip", kRadius - 1);
    svg_.text(card.x + kPadding, card.y + 21, "name", fitted(name, room, kNameFont));
    svg_.text(card.x + kPadding, card.y + 38, "facts", fitted(facts, room, kSmallFont));
    const auto rate = report_.bitRate(packets);
    svg_.text(end, card.y + 21, "total",
              rate ? bitRateText(*rate) : shareText(report_.share(packets)), Anchor::kEnd);
    if (rate) {
      svg_.text(end, card.y + 38, "facts", shareText(report_.share(packets)), Anchor::kEnd);
    }
  }

  [[nodiscard]] std::set<size_t> takersOf(size_t band, size_t row) const {
    std::set<size_t> services;
    if (layout_.bands[band].service) {
      return {*layout_.bands[band].service};
    }
    const auto entry = takers_.find({band, row});
    return entry == takers_.end() ? services : entry->second;
  }

  static std::string serviceList(const std::set<size_t>& services) {
    std::vector<std::string> texts;
    texts.reserve(services.size());
    for (const size_t service : services) {
      texts.push_back(std::to_string(service));
    }
    return joined(texts, " ");
  }

  void inputRow(const Box& row, const InputStream& stream, const std::set<size_t>& services) {
    const PidCount count = report_.countOf(stream.pid);
    const std::string silent = count.packets == 0 ? " silent" : "";
    const auto group = svg_.group({{"class", "row part k-" + kindWord(stream.kind) + silent},
                                   {"data-s", serviceList(services)},
                                   {"data-pid", std::to_string(stream.pid)}});
    svg_.title(inputTitle(stream, count));
    const double y = row.middle() + kBaseLine;
    svg_.rect({row.x + 1, row.y, row.width - 2, row.height}, "hover");
    svg_.rect({row.x + kSwatch, row.y + 5, 4, row.height - 10}, "swatch", 2);
    pidTexts(row, stream.pid);
    svg_.text(row.x + kText, y, "what", fitted(stream.description, kTextWidth, kFont));
    if (stream.hasPcr) {
      chip(row.x + kPcrChip, row.middle(), "PCR");
    }
    svg_.text(row.x + kLanguage, y, "language",
              fitted(joined(stream.languages, " "), kLanguageWidth, kFont));
    if (count.packets == 0) {
      svg_.text(row.right() - kPadding, y, "muted", "no packets", Anchor::kEnd);
      return;
    }
    bar(row, count.packets);
    amountTexts(row, count);
  }

  void pidTexts(const Box& row, int pid) {
    const double y = row.middle() + kBaseLine;
    svg_.text(row.x + kPidEnd, y, "pid", std::to_string(pid), Anchor::kEnd);
    svg_.text(row.x + kHexPid, y, "hex", pidText(pid));
  }

  /** Stuffing may be more than a bar can show: then the bar has a gap in it. */
  void bar(const Box& row, uint64_t packets) {
    const double whole = static_cast<double>(packets) / layout_.fullRate;
    const Box track = {row.x + kBar, row.middle() - 4, kBarWidth, 8};
    svg_.rect(track, "track", 2);
    svg_.rect({track.x, track.y, std::max(kBarWidth * std::min(whole, 1.0), 1.0), track.height},
              "bar", 2);
    if (whole > 1) {
      svg_.rect({track.x + kBarWidth * 0.7, track.y - 1, 3, track.height + 2}, "gap");
    }
  }

  void amountTexts(const Box& row, const PidCount& count) {
    const double y = row.middle() + kBaseLine;
    const double end = row.right() - kPadding;
    if (const auto rate = report_.bitRate(count.packets)) {
      svg_.text(row.x + kRateEnd, y, "rate", bitRateText(*rate), Anchor::kEnd);
    }
    svg_.text(end, y, "share", shareText(report_.share(count.packets)), Anchor::kEnd);
    if (isFaulty(count)) {
      svg_.circle(row.x + 6, row.middle(), 3, "fault");
    }
  }

  [[nodiscard]] std::string amount(uint64_t packets) const {
    const auto rate = report_.bitRate(packets);
    return joinedWith(", ", {rate ? bitRateText(*rate) : "", shareText(report_.share(packets)),
                             counted(packets, "packet")});
  }

  [[nodiscard]] std::string inputTitle(const InputStream& stream, const PidCount& count) const {
    std::string title = "PID " + std::to_string(stream.pid) + " (" + pidText(stream.pid) + ")\n" +
                        joinedWith(", ", {stream.description, joined(stream.languages, " "),
                                          stream.hasPcr ? "carries the PCR" : ""}) +
                        "\n" + amount(count.packets);
    const auto add = [&title](uint64_t number, const char* noun) {
      if (number != 0) {
        title += "\n" + counted(number, noun);
      }
    };
    add(count.continuityErrors, "continuity error");
    add(count.scrambled, "scrambled packet");
    add(count.transportErrors, "packet flagged as damaged");
    add(count.crcErrors, "CRC error");
    return title;
  }

  // -- the right side

  void drawOutput(size_t place) {
    const Band& band = layout_.bands[place];
    if (!band.service) {
      return;
    }
    const auto& output = report_.services[*band.service].output;
    if (!band.output || !output) {
      return;
    }
    const auto card = svg_.group(cardAttributes("output", band));
    svg_.rect(*band.output, "frame", kRadius);
    outputHead(*band.output, *output);
    for (size_t row = 0; row < output->streams.size(); ++row) {
      outputRow(band.outputRows[row], output->streams[row], *band.service);
    }
  }

  void outputHead(const Box& card, const Output& output) {
    constexpr double kVersions = 128;
    std::vector<std::string> versions;
    for (const TableFact& table : output.tables) {
      versions.push_back(table.kind + " " + std::to_string(table.version.value_or(0)));
    }
    const double room = card.width - 2 * kPadding;
    svg_.text(card.x + kPadding, card.y + 21, "name", fitted(output.name, room, kNameFont));
    svg_.text(card.x + kPadding, card.y + 38, "facts",
              fitted("service " + std::to_string(output.serviceId) + " · transport stream " +
                         std::to_string(output.transportStreamId),
                     room - kVersions, kSmallFont));
    svg_.text(card.right() - kPadding, card.y + 38, "facts", joined(versions, " · "), Anchor::kEnd);
  }

  void outputRow(const Box& row, const OutputStream& stream, size_t service) {
    const auto group = svg_.group({{"class", "row part k-" + kindWord(stream.kind)},
                                   {"data-s", std::to_string(service)},
                                   {"data-pid", std::to_string(stream.outputPid)}});
    svg_.title(outputTitle(stream));
    const double y = row.middle() + kBaseLine;
    svg_.rect({row.x + 1, row.y, row.width - 2, row.height}, "hover");
    svg_.rect({row.x + kSwatch, row.y + 5, 4, row.height - 10},
              stream.made ? "swatch made" : "swatch", 2);
    pidTexts(row, stream.outputPid);
    svg_.text(row.x + kText, y, "what", fitted(stream.description, kTextWidth, kFont));
    svg_.text(row.x + kLanguage, y, "language",
              fitted(joined(stream.languages, " "), kLanguageWidth, kFont));
    double x = row.x + kPcrChip;
    for (const std::string& attribute : stream.attributes) {
      x = chip(x, row.middle(), attribute);
    }
  }

  static std::string outputTitle(const OutputStream& stream) {
    const std::string source = stream.made ? "made by the daemon"
                               : stream.inputPid
                                   ? "from input PID " + std::to_string(*stream.inputPid) + " (" +
                                         pidText(*stream.inputPid) + ")"
                                   : "the daemon does not know its input PID";
    return "Output PID " + std::to_string(stream.outputPid) + " (" + pidText(stream.outputPid) +
           ")\n" +
           joinedWith(", ", {stream.description, joined(stream.languages, " "),
                             joined(stream.attributes, ", ")}) +
           "\n" + source;
  }

  /** Returns where the next one goes. */
  double chip(double x, double middle, const std::string& word) {
    const double width = textWidth(word) * kChipFont + 8;
    svg_.rect({x, middle - kChipHeight / 2, width, kChipHeight}, "chip", 3);
    svg_.text(x + width / 2, middle + 3.6, "chip-text", word, Anchor::kMiddle);
    return x + width + kChipGap;
  }

  // -- the middle

  void drawLink(const Link& link) {
    const Box& from = layout_.bands[link.fromBand].inputRows[link.fromRow];
    const Box& to = layout_.bands[link.toBand].outputRows[link.toRow];
    const InputStream& source = inputStreams(report_, layout_.bands[link.fromBand])[link.fromRow];
    const OutputStream& target = report_.services[link.toBand].output->streams[link.toRow];
    const std::string dashed =
        target.made || report_.countOf(source.pid).packets == 0 ? " dashed" : "";
    const auto group = svg_.group({{"class", "link part k-" + kindWord(source.kind) + dashed},
                                   {"data-s", std::to_string(link.toBand)},
                                   {"data-from", std::to_string(source.pid)},
                                   {"data-to", std::to_string(target.outputPid)}});
    svg_.title(
        "Input PID " + std::to_string(source.pid) + " to output PID " +
        std::to_string(target.outputPid) + "\n" +
        (target.made ? "rewritten by the daemon" : amount(report_.countOf(source.pid).packets)));
    const double bend = (kOutputLeft - kInputWidth) * 0.5;
    const std::string fromY = coordinate(from.middle());
    const std::string toY = coordinate(to.middle());
    svg_.path("M" + coordinate(from.right()) + " " + fromY + "C" + coordinate(from.right() + bend) +
                  " " + fromY + " " + coordinate(to.x - bend) + " " + toY + " " + coordinate(to.x) +
                  " " + toY,
              {{"stroke-width", coordinate(link.thickness)}});
  }

  const Report& report_;
  Svg svg_;
  MultiplexLayout layout_;
  std::map<std::pair<size_t, size_t>, std::set<size_t>> takers_;  // services, by band and row
};

}  // namespace

void drawMultiplex(const Report& report, Markup& markup) {
  Picture(report, markup).draw();
}

}  // namespace tevra::tools::report
