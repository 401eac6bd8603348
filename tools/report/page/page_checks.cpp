#include <array>
#include <string>
#include <vector>

#include "tools/report/page/check_words.h"
#include "tools/report/page/figures.h"
#include "tools/report/page/page_sections.h"
#include "tools/report/page/table_cells.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

void checkRow(const StreamCheck& check, Markup& markup) {
  static constexpr std::array<const char*, 3> kClasses = {"passed", "fault", "none"};
  const auto row = markup.open("tr");
  cell(markup, check.number);
  markup.leaf("td", {{"class", kClasses.at(static_cast<size_t>(check.result))}}, resultText(check));
  cell(markup, check.name);
  figureCell(markup, timeText(check.worst));
  figureCell(markup, check.limit);
  faultCell(markup, check.count);
  cell(markup, pidsText(check.pids));
}

void checks(const Report& report, Markup& markup) {
  const auto frame = markup.scroller("Checks");
  const auto table = markup.open("table");
  headRow({"No.", "Result", "Check", "Worst", "Limit", "Count", "PIDs"}, markup);
  const auto body = markup.open("tbody");
  for (const StreamCheck& check : report.checks) {
    checkRow(check, markup);
  }
}

void intervalRow(const std::string& side, const IntervalFact& fact, Markup& markup) {
  const auto row = markup.open("tr");
  cell(markup, side);
  cell(markup, fact.what);
  cell(markup, fact.serviceIds.empty() ? "" : "service " + numbersText(fact.serviceIds));
  figureCell(markup, idText(fact.pid));
  figureCell(markup, groupedText(fact.count));
  figureCell(markup, timeText(fact.shortest));
  figureCell(markup, timeText(fact.mean));
  figureCell(markup, timeText(fact.longest));
}

void intervals(const Report& report, Markup& markup) {
  markup.leaf("h3", {}, "Intervals");
  if (report.intervals.empty()) {
    markup.leaf("p", {{"class", "note"}}, "Unknown: no PCR, or nothing that came twice.");
    return;
  }
  markup.leaf("p", {{"class", "note"}},
              "By the stream's own clock. An output has the PCRs of the PID that it carries; how "
              "often its tables are sent is up to who sends them: here as extract does of a live "
              "stream.");
  const auto frame = markup.scroller("Intervals");
  const auto table = markup.open("table");
  headRow({"Side", "Table", "Of", "PID", "Intervals", "Shortest", "Mean", "Longest"}, markup);
  const auto body = markup.open("tbody");
  for (const IntervalFact& fact : report.intervals) {
    intervalRow("input", fact, markup);
  }
  for (const Service& service : report.services) {
    for (const IntervalFact& fact :
         service.output ? service.output->intervals : std::vector<IntervalFact>{}) {
      intervalRow("output", fact, markup);
    }
  }
}

}  // namespace

void checksSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "checks-section"}});
  markup.leaf("h2", {}, "Checks");
  markup.leaf(
      "p", {{"class", "note"}},
      "ETSI TR 101 290, 5.2.1 and 5.2.2, as far as a recording shows them. First priority " +
          firstPriorityText(report.checks) + ".");
  checks(report, markup);
  intervals(report, markup);
}

}  // namespace tevra::tools::report
