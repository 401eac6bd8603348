#include "tools/text/text_table.h"

#include <algorithm>
#include <utility>

#include "tools/text/words.h"

namespace tevra::tools {
namespace {

constexpr size_t kColumnGap = 2;

}  // namespace

TextTable::TextTable(std::vector<std::string> heading) {
  rows_.push_back(std::move(heading));
}

void TextTable::addRow(std::vector<std::string> cells) {
  cells.resize(rows_.front().size());
  rows_.push_back(std::move(cells));
}

void TextTable::print(std::ostream& out, size_t indent) const {
  std::vector<size_t> widths(rows_.front().size());
  for (const auto& row : rows_) {
    for (size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
  }
  for (const auto& row : rows_) {
    std::string line(indent, ' ');
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i] + std::string(widths[i] - displayWidth(row[i]) + kColumnGap, ' ');
    }
    const size_t end = line.find_last_not_of(' ');
    out << line.substr(0, end == std::string::npos ? 0 : end + 1) << "\n";
  }
}

}  // namespace tevra::tools
