#pragma once

#include <vector>

#include "tools/si/section.h"
#include "tools/si/si_table.h"

namespace tevra::tools {

/**
 * Decodes a complete sub-table, whose sections are given in order and are not empty.
 *
 * Every section is decoded on its own, so that the time taken is linear in the table's size, and
 * the loops are joined in section order. Header members are the first section's. PAT programmes on
 * PID 0, which no programme may use, are left out.
 */
[[nodiscard]] SiTable decodeTable(const std::vector<Section>& sections);

}  // namespace tevra::tools
