#pragma once

#include <string>
#include <vector>

#include "tools/changes/change.h"

namespace tevra::tools {

/** A difference for people. */
struct ChangeLine {
  char sign;         ///< '+' added, '-' removed, '~' changed
  std::string text;  ///< UTF-8, not made harmless for a terminal yet
};

/**
 * One line for each entry that changed, with everything that changed about it. Without the table's
 * version and time, which stand in the line above them.
 */
[[nodiscard]] std::vector<ChangeLine> changeLines(const Changes& changes);

}  // namespace tevra::tools
