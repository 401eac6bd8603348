#pragma once

#include <vector>

namespace tevra {

/** Holds the last table of a kind: no element before the first, never more than one. */
template <class Table>
using TableSlot = std::vector<Table>;

/** Empties the slot, then appends a copy: a copy that fails leaves the slot empty. */
template <class Table>
void replaceTable(TableSlot<Table>& slot, const Table& table) {
  slot.clear();
  slot.push_back(table);
}

/** Copies the last element to `out`; false and `out` untouched when there is none. */
template <class Table>
[[nodiscard]] bool copyTable(const TableSlot<Table>& slot, Table& out) {
  if (slot.empty()) {
    return false;
  }
  out = slot.back();
  return true;
}

}  // namespace tevra
