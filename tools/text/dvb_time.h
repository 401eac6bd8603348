#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tevra::tools {

/**
 * A 40-bit UTC time (EN 300 468 annex C) in seconds since 1970-01-01; nothing where a digit of it
 * is none, as in a time that is undefined.
 */
[[nodiscard]] std::optional<int64_t> secondsOfDvbTime(int64_t utcTime);

/** A difference of times: "+00:00:02", "-3 d 02:00:00". */
[[nodiscard]] std::string spanText(int64_t seconds);

}  // namespace tevra::tools
