#pragma once

#include "tools/changes/change.h"
#include "tools/si/si_table.h"

namespace tevra::tools {

/**
 * How a table differs from the one before it, in what tableFields() says of both: its own fields
 * first, then its descriptors, then the entries that are gone, then those of `to` in its order.
 * Empty when nothing differs, or when the two are of different kinds.
 *
 * Entries are told apart by their ids, descriptors by tag, CA descriptors by their CA system too.
 * Of an entry that both have every field that differs is a change of its own. A stream of a PMT
 * that has nothing but another PID is one whose PID changed.
 *
 * Events whose start times moved equally are one change with all their ids, its sides the first of
 * them.
 */
[[nodiscard]] Changes tableChanges(const SiTable& from, const SiTable& to);

}  // namespace tevra::tools
