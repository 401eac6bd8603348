#include "tools/text/text_table.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "tools/text/words.h"
#include "tools/text/wrap.h"

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

void TextTable::print(std::ostream& out, size_t indent, size_t width) const {
  const std::vector<size_t> widths = columnWidths();
  const size_t needed =
      std::accumulate(widths.begin(), widths.end(), indent + kColumnGap * (widths.size() - 1));
  const bool fits = width == 0 || needed <= width;
  out << (fits ? inColumns(indent) : inParagraphs(indent, width));
}

std::vector<size_t> TextTable::columnWidths() const {
  std::vector<size_t> widths(rows_.front().size());
  for (const auto& row : rows_) {
    for (size_t i = 0; i < row.size(); ++i) {
      widths[i] = std::max(widths[i], displayWidth(row[i]));
    }
  }
  return widths;
}

std::string TextTable::inColumns(size_t indent) const {
  const std::vector<size_t> widths = columnWidths();
  std::string text;
  for (const auto& row : rows_) {
    std::string line(indent, ' ');
    for (size_t i = 0; i < row.size(); ++i) {
      line += row[i];
      line.append(widths[i] - displayWidth(row[i]) + kColumnGap, ' ');
    }
    const size_t end = line.find_last_not_of(' ');
    text.append(line, 0, end == std::string::npos ? 0 : end + 1).append("\n");
  }
  return text;
}

std::string TextTable::inParagraphs(size_t indent, size_t width) const {
  const std::vector<std::string>& heading = rows_.front();
  std::string text;
  for (size_t row = 1; row < rows_.size(); ++row) {
    const std::vector<std::string>& cells = rows_[row];
    std::string line = std::string(indent, ' ') + heading[0] + " " + cells[0];
    for (size_t i = 1; i < cells.size(); ++i) {
      const std::string item = heading[i] + " " + cells[i];
      if (cells[i].empty()) {
        continue;
      }
      if (displayWidth(line) + kColumnGap + displayWidth(item) > width) {
        text += line + "\n";
        line.assign(indent, ' ');
      }
      line.append(kColumnGap, ' ').append(item);
    }
    text += line + "\n";
  }
  return wrapped(text, width, indent + 2 * kColumnGap);
}

}  // namespace tevra::tools
