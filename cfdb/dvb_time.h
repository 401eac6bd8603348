#pragma once

#include <cstdint>

/**
 * @file
 * Arithmetic on DVB time values: bits 0-7 seconds, 8-15 minutes, 16-23 hours, two BCD digits each;
 * from bit 24 up the Modified Julian Date (EN 300 468 annex C). Any time is accepted; digits above
 * 9 count as they stand.
 */
namespace tevra {

/** Seconds from `a` to `b`. */
[[nodiscard]] int64_t dvbTimeDifference(uint64_t a, uint64_t b);

/**
 * `time` moved `offset` seconds earlier, so that a broadcast clock ahead of the system clock moves
 * events back. Times before MJD 0 become MJD 0, 00:00:00. `offset` is a difference of two times, as
 * dvbTimeDifference gives it: less than 2^57 either way.
 */
[[nodiscard]] uint64_t restampDVBTime(uint64_t time, int64_t offset);

}  // namespace tevra
