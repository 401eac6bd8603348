#pragma once

#include <cstdint>

namespace tevra::host {

/**
 * DVB time value (see GetUTCTime) of the instant `seconds` after 1970-01-01 00:00:00 UTC.
 *
 * The day count goes on past the 16 bits that a section gives it (2038-04-22). Before its day 0
 * (1858-11-17) the result is 0.
 */
[[nodiscard]] uint64_t dvbTimeFromUnix(int64_t seconds);

}  // namespace tevra::host
