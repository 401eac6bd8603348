#pragma once

#include <cstdint>
#include <string>

namespace tevra::tools {

/**
 * A 40-bit UTC time (EN 300 468 annex C) as "2024-11-21 06:30:00"; digits that are none stay as
 * they are coded.
 */
[[nodiscard]] std::string dvbTimeText(int64_t utcTime);

}  // namespace tevra::tools
