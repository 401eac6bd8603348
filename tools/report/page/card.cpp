#include "tools/report/page/card.h"

#include "tools/report/facts/stream_traits.h"
#include "tools/report/page/multiplex_layout.h"
#include "tools/report/page/text_fit.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

using Anchor = Svg::Anchor;

constexpr double kFont = 12.5;
constexpr double kFactsFont = 11.5;
constexpr double kNameFont = 15 * 1.125;  // bold
constexpr double kNameLine = 21;          // from the top of the card
constexpr double kFactsLine = 38;
constexpr double kRadius = 7;

// Columns, from the left side of the card.
constexpr double kSwatch = 14;
constexpr double kPidEnd = 60;
constexpr double kHexPid = 66;
constexpr double kText = 120;
constexpr double kTextWidth = 126;
constexpr double kLanguage = 250;
constexpr double kLanguageWidth = 54;
constexpr double kChips = 304;

constexpr double kChipFont = 10;
constexpr double kChipHeight = 15;
constexpr double kChipGap = 4;

Attributes cardAttributes(const std::string& side, std::optional<size_t> service) {
  Attributes attributes = {{"class", "card part " + side}};
  if (service) {
    attributes.emplace_back("data-s", std::to_string(*service));
    attributes.emplace_back("data-service", std::to_string(*service));
  }
  return attributes;
}

Attributes rowAttributes(const RowFacts& facts) {
  std::vector<std::string> services;
  services.reserve(facts.services.size());
  for (const size_t service : facts.services) {
    services.push_back(std::to_string(service));
  }
  return {{"class", "row part k-" + kindWord(facts.kind) + (facts.silent ? " silent" : "")},
          {"data-s", joined(services, " ")},
          {"data-pid", std::to_string(facts.pid)}};
}

}  // namespace

Card::Card(Svg& svg, const std::string& side, const Box& box, std::optional<size_t> service)
    : svg_(svg), box_(box), group_(svg.group(cardAttributes(side, service))) {
  svg_.rect(box_, "frame", kRadius);
}

void Card::head(const CardHead& head) {
  const double left = box_.x + kCardPadding;
  const double right = box_.right() - kCardPadding;
  const auto beside = [&](const std::string& figures) {
    return right - left - (figures.empty() ? 0 : head.figuresWidth);
  };
  svg_.rect({box_.x + 1, box_.y + 1, box_.width - 2, kHeadHeight - 7}, "grip", kRadius - 1);
  svg_.text(left, box_.y + kNameLine, "name", fitted(head.name, beside(head.figure), kNameFont));
  svg_.text(left, box_.y + kFactsLine, "facts",
            fitted(head.facts, beside(head.moreFigures), kFactsFont));
  svg_.text(right, box_.y + kNameLine, "total", head.figure, Anchor::kEnd);
  svg_.text(right, box_.y + kFactsLine, "facts", head.moreFigures, Anchor::kEnd);
}

CardRow::CardRow(Svg& svg, const Box& box, const RowFacts& facts)
    : svg_(svg), box_(box), nextChip_(box.x + kChips), group_(svg.group(rowAttributes(facts))) {
  const double y = box.middle() + kBaseLine;
  svg_.title(facts.title);
  svg_.rect({box.x + 1, box.y, box.width - 2, box.height}, "hover");
  svg_.rect({box.x + kSwatch, box.y + 5, 4, box.height - 10}, facts.made ? "swatch made" : "swatch",
            2);
  svg_.text(box.x + kPidEnd, y, "pid", std::to_string(facts.pid), Anchor::kEnd);
  svg_.text(box.x + kHexPid, y, "hex", hex(facts.pid, 4));
  svg_.text(box.x + kText, y, "what", fitted(facts.description, kTextWidth, kFont));
  svg_.text(box.x + kLanguage, y, "language",
            fitted(joined(facts.languages, " "), kLanguageWidth, kFont));
}

void CardRow::chip(const std::string& word) {
  const double width = textWidth(word) * kChipFont + 8;
  svg_.rect({nextChip_, box_.middle() - kChipHeight / 2, width, kChipHeight}, "chip", 3);
  svg_.text(nextChip_ + width / 2, box_.middle() + 3.6, "chip-text", word, Anchor::kMiddle);
  nextChip_ += width + kChipGap;
}

}  // namespace tevra::tools::report
