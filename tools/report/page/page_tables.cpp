#include "tools/report/page/page_sections.h"

#include <string>

#include "tools/report/page/figures.h"
#include "tools/report/page/page_words.h"
#include "tools/report/page/table_cells.h"
#include "tools/si/table_identity.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

/** What is said of a table of either side; `sections` and what comes behind differ. */
void factCells(const TableFact& fact, Markup& markup) {
  const TableIdentity identity = identityOf(fact.table);
  const auto version = versionOf(fact.table);
  cell(markup, namesOf(identity.kind).whole);
  figureCell(markup, hex(identity.tableId, 2));
  cell(markup, identity.subject());
  figureCell(markup, version ? std::to_string(*version) : "–");
  figureCell(markup, std::to_string(fact.sections));
}

void inputRow(const TableFact& fact, const PidCount& count, Markup& markup) {
  const auto row = markup.open("tr");
  factCells(fact, markup);
  figureCell(markup, groupedText(fact.times));
  figureCell(markup, groupedText(fact.arrivals));
  figureCell(markup, idText(fact.pid));
  faultCell(markup, count.crcErrors);
  faultCell(markup, count.otherSections);
  faultCell(markup, count.continuityErrors);
}

void inputTables(const Report& report, Markup& markup) {
  markup.leaf("h3", {}, "Input");
  markup.leaf("p", {{"class", "note"}},
              "The last version of each; how often a version was complete, and how often the table "
              "came with its repetitions. Faults are those of the whole PID: which table a damaged "
              "section is of, nobody knows.");
  const auto frame = markup.scroller("Input tables");
  const auto table = markup.open("table");
  headRow({"Table", "table_id", "Of", "Version", "Sections", "Versions", "Came", "PID",
           "CRC errors", "Damaged", "Gaps"},
          markup);
  const auto body = markup.open("tbody");
  for (const TableFact& fact : report.tables) {
    inputRow(fact, report.countOf(fact.pid), markup);
  }
}

void outputName(const Output& output, Markup& markup) {
  const auto name =
      markup.open("th", {{"scope", "rowgroup"}, {"rowspan", std::to_string(output.tables.size())}});
  markup.leaf("bdi", {}, output.name);
  markup.leaf("small", {}, serviceText(output.serviceId));
}

void outputRows(const Output& output, Markup& markup) {
  const auto body = markup.open("tbody");
  for (size_t place = 0; place < output.tables.size(); ++place) {
    const auto row = markup.open("tr");
    if (place == 0) {
      outputName(output, markup);
    }
    factCells(output.tables[place], markup);
    figureCell(markup, idText(output.tables[place].pid));
  }
}

void outputTables(const Report& report, Markup& markup) {
  markup.leaf("h3", {}, "Outputs");
  markup.leaf("p", {{"class", "note"}},
              "Made by the daemon, with the versions that it gives them.");
  const auto frame = markup.scroller("Output tables");
  const auto table = markup.open("table", {{"class", "outputs"}});
  headRow({"Output", "Table", "table_id", "Of", "Version", "Packets", "PID"}, markup);
  for (const Service& service : report.services) {
    if (service.output) {
      outputRows(*service.output, markup);
    }
  }
}

}  // namespace

void tablesSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "tables-section"}});
  markup.leaf("h2", {}, "Tables");
  inputTables(report, markup);
  if (report.outputs() != 0) {
    outputTables(report, markup);
  }
}

}  // namespace tevra::tools::report
