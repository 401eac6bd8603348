#pragma once

#include <cstddef>

#include "tools/changes/change.h"

namespace tevra::tools {

/**
 * Makes one change of those of an EIT that say that an event's start time moved, as far as they
 * moved equally; it stands where the first of them stood, and an event that moved alone keeps its
 * own. `events` is how many events both tables have.
 */
void foldEventShifts(Changes& changes, size_t events);

}  // namespace tevra::tools
