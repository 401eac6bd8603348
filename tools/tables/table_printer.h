#pragma once

#include <cstddef>
#include <ostream>

#include "tools/si/si_table.h"

namespace tevra::tools {

/** Prints tables one after the other: for people with a blank line between, or as a JSON array. */
class TablePrinter {
 public:
  /** `out` must outlive the printer. */
  TablePrinter(std::ostream& out, bool json) : out_(out), json_(json) {}

  /** Prints it decoded, at once. */
  void print(const SiTable& table);
  /** Completes the JSON array, which is empty if nothing was printed. Call it once, at the end. */
  void finish();

  /** How many tables. */
  [[nodiscard]] size_t printed() const { return printed_; }

 private:
  std::ostream& out_;
  bool json_;
  size_t printed_ = 0;
};

}  // namespace tevra::tools
