#pragma once

#include <ostream>
#include <string>
#include <vector>

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
   * One line per row, the heading first, each behind `indent` blanks; no blanks at a line's end.
   */
  void print(std::ostream& out, size_t indent = 0) const;

 private:
  std::vector<std::vector<std::string>> rows_;
};

}  // namespace tevra::tools
