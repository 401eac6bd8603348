#include "tools/report/page/table_cells.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "tools/report/page/figures.h"

namespace tevra::tools::report {
namespace {

/** All other columns hold figures. */
bool holdsText(std::string_view column) {
  static constexpr std::array<std::string_view, 11> kTexts = {
      "Output", "Table", "Of", "No.", "Check", "PIDs", "Side", "Result", "Name", "Kind", "PMT"};
  return std::find(kTexts.begin(), kTexts.end(), column) != kTexts.end();
}

}  // namespace

void headRow(const std::vector<const char*>& columns, Markup& markup) {
  const auto head = markup.open("thead");
  const auto row = markup.open("tr");
  for (const char* column : columns) {
    Attributes attributes = {{"scope", "col"}};
    if (!holdsText(column)) {
      attributes.emplace_back("class", "figure");
    }
    markup.leaf("th", attributes, column);
  }
}

void cell(Markup& markup, const std::string& text) {
  markup.leaf("td", {}, text);
}

void figureCell(Markup& markup, const std::string& text) {
  markup.leaf("td", {{"class", "figure"}}, text);
}

void faultCell(Markup& markup, uint64_t count) {
  markup.leaf("td", {{"class", count == 0 ? "figure none" : "figure fault"}}, groupedText(count));
}

}  // namespace tevra::tools::report
