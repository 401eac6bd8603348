#include "tools/report/page/page_tables.h"

#include <algorithm>
#include <string>
#include <vector>

#include "tools/report/page/figures.h"
#include "tools/text/words.h"

namespace tevra::tools::report {
namespace {

/** Columns of figures are set flush right. */
struct Column {
  const char* name;
  bool isFigure;
};

Attributes cellAttributes(bool isFigure) {
  return isFigure ? Attributes{{"class", "figure"}} : Attributes{};
}

void headRow(const std::vector<Column>& columns, Markup& markup) {
  const auto head = markup.open("thead");
  const auto row = markup.open("tr");
  for (const Column& column : columns) {
    Attributes attributes = cellAttributes(column.isFigure);
    attributes.emplace_back("scope", "col");
    markup.leaf("th", attributes, column.name);
  }
}

void cell(Markup& markup, const std::string& text) {
  markup.leaf("td", {}, text);
}

void figureCell(Markup& markup, const std::string& text) {
  markup.leaf("td", cellAttributes(true), text);
}

void faultCell(Markup& markup, uint64_t count) {
  markup.leaf("td", {{"class", count == 0 ? "figure none" : "figure fault"}}, groupedText(count));
}

std::string versionText(const TableFact& fact) {
  return fact.version ? std::to_string(*fact.version) : "–";
}

std::string pidCellText(int pid) {
  return std::to_string(pid) + " (" + pidText(pid) + ")";
}

void inputRow(const TableFact& fact, const Report& report, Markup& markup) {
  const PidCount count = report.countOf(fact.pid);
  const auto row = markup.open("tr");
  cell(markup, fact.kind);
  figureCell(markup, hex(fact.tableId, 2));
  cell(markup, fact.of);
  figureCell(markup, versionText(fact));
  figureCell(markup, std::to_string(fact.sections));
  figureCell(markup, std::to_string(fact.times));
  figureCell(markup, pidCellText(fact.pid));
  faultCell(markup, count.crcErrors);
  faultCell(markup, count.otherSections);
  faultCell(markup, count.continuityErrors);
}

void inputTables(const Report& report, Markup& markup) {
  markup.leaf("h3", {}, "Input");
  markup.leaf("p", {{"class", "note"}},
              "The last version of each. Faults are those of the whole PID: which table a damaged "
              "section is of, nobody knows.");
  const auto frame = markup.open(
      "div",
      {{"class", "wide"}, {"tabindex", "0"}, {"role", "region"}, {"aria-label", "Input tables"}});
  const auto table = markup.open("table");
  headRow({{"Table", false},
           {"table_id", true},
           {"Of", false},
           {"Version", true},
           {"Sections", true},
           {"Came", true},
           {"PID", true},
           {"CRC errors", true},
           {"Damaged", true},
           {"Gaps", true}},
          markup);
  const auto body = markup.open("tbody");
  for (const TableFact& fact : report.tables) {
    inputRow(fact, report, markup);
  }
}

void outputRows(const Output& output, Markup& markup) {
  for (size_t place = 0; place < output.tables.size(); ++place) {
    const TableFact& fact = output.tables[place];
    const auto row = markup.open("tr", {{"class", place == 0 ? "first" : "more"}});
    if (place == 0) {
      const auto name = markup.open(
          "th", {{"scope", "rowgroup"}, {"rowspan", std::to_string(output.tables.size())}});
      markup.leaf("bdi", {}, output.name);
      markup.leaf("small", {}, "service " + std::to_string(output.serviceId));
    }
    cell(markup, fact.kind);
    figureCell(markup, hex(fact.tableId, 2));
    cell(markup, fact.of);
    figureCell(markup, versionText(fact));
    figureCell(markup, std::to_string(fact.sections));
    figureCell(markup, pidCellText(fact.pid));
  }
}

void outputTables(const Report& report, Markup& markup) {
  markup.leaf("h3", {}, "Outputs");
  markup.leaf("p", {{"class", "note"}},
              "Made by the daemon, with the versions that it gives them.");
  const auto frame = markup.open(
      "div",
      {{"class", "wide"}, {"tabindex", "0"}, {"role", "region"}, {"aria-label", "Output tables"}});
  const auto table = markup.open("table", {{"class", "outputs"}});
  headRow({{"Output", false},
           {"Table", false},
           {"table_id", true},
           {"Of", false},
           {"Version", true},
           {"Packets", true},
           {"PID", true}},
          markup);
  for (const Service& service : report.services) {
    if (service.output) {
      const auto body = markup.open("tbody");
      outputRows(*service.output, markup);
    }
  }
}

bool hasOutput(const Report& report) {
  return std::any_of(report.services.begin(), report.services.end(),
                     [](const Service& service) { return service.output.has_value(); });
}

}  // namespace

void tablesSection(const Report& report, Markup& markup) {
  const auto section = markup.open("section", {{"class", "tables-section"}});
  markup.leaf("h2", {}, "Tables");
  inputTables(report, markup);
  if (hasOutput(report)) {
    outputTables(report, markup);
  }
}

}  // namespace tevra::tools::report
