#pragma once

#include <vector>

#include "records/records.h"
#include "tools/si/section.h"

namespace tevra::tools {

/**
 * Decodes the sections of one EIT sub-table (EN 300 468, 5.2.4), which are not empty, in order.
 *
 * libdvbpsi's own EIT decoder is of no use here: where section numbers have gaps, as they do in
 * every schedule, it hands a table on only when sections of it have come twice.
 *
 * segmentLastSectionNumber is the first section's. An event is NVOD by libdvbpsi's rule: its start
 * time's low 32 bits begin with 20 ones and it is not running.
 */
[[nodiscard]] EIT decodeEit(const std::vector<Section>& sections);

}  // namespace tevra::tools
