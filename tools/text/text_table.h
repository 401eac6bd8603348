#pragma once

#include <ostream>
#include <string>
#include <vector>

#include "tools/text/terminal.h"

namespace tevra::tools {

/** Columns of UTF-8 text, each as wide as its widest cell, for people to read. */
class TextTable {
 public:
  /** As many columns as `heading` has cells. */
  explicit TextTable(std::vector<std::string> heading);

  /** A row may have fewer cells than the heading, not more. */
  void addRow(std::vector<std::string> cells);
  /** Whether there is no row but the heading. */
  [[nodiscard]] bool empty() const { return rows_.size() == 1; }

  /**
   * One line per row, the heading first, each behind `indent` blanks; no blanks at a line's end. On
   * a terminal that is narrower, a row is a paragraph: the cells that are not empty, each behind
   * its column's heading, as many on a line as it has room for. What a line is too short for even
   * alone is broken between words.
   */
  void print(std::ostream& out, size_t indent = 0) const { print(out, indent, widthOf(out)); }
  /** The same for lines of `width` characters; 0 is no limit. */
  void print(std::ostream& out, size_t indent, size_t width) const;

 private:
  [[nodiscard]] std::vector<size_t> columnWidths() const;
  [[nodiscard]] std::string inColumns(size_t indent) const;
  [[nodiscard]] std::string inParagraphs(size_t indent, size_t width) const;

  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tevra::tools
