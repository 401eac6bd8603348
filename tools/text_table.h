#pragma once

#include <cstdint>
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

/** How many characters UTF-8 text has. */
[[nodiscard]] size_t displayWidth(const std::string& utf8);

/** "1 packet", "2 packets". */
[[nodiscard]] std::string counted(unsigned long long count, const std::string& noun);
/** The same of a noun whose plural is another. */
[[nodiscard]] std::string counted(unsigned long long count, const std::string& noun,
                                  const std::string& plural);

/** "0x" and at least `digits` hexadecimal digits; `value` is not negative. */
[[nodiscard]] std::string hex(int64_t value, int digits);

/** The text with a blank for every control character, so that it stays on its line. */
[[nodiscard]] std::string oneLine(std::string text);

/** The parts with `separator` between them. */
[[nodiscard]] std::string joined(const std::vector<std::string>& parts,
                                 const std::string& separator);

}  // namespace tevra::tools
