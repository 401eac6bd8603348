#pragma once

#include <cstdint>
#include <optional>
#include <string>

/**
 * @file
 * Times and durations of a stream, which are coded in decimal digits (EN 300 468 annex C). One of
 * all ones is undefined (5.2.4) and shown as "undefined". One that cannot be, with a digit over 9
 * or at 29:00 of a day, is shown in its digits as they are coded, and nothing is reckoned with it.
 */
namespace tevra::tools {

///@{
/** In seconds. */
inline constexpr int64_t kMinute = 60;
inline constexpr int64_t kHour = 60 * kMinute;
inline constexpr int64_t kDay = 24 * kHour;
///@}

/**
 * A time in seconds of UTC since 1858-11-17, the day 0 of the Modified Julian Date; not negative.
 * A multiple of kDay is a midnight.
 */
using StreamTime = int64_t;
/** 1970-01-01, from which the system's clock counts. */
inline constexpr StreamTime kUnixEpoch = 40587 * kDay;

/** Of a 40-bit UTC time; nothing of one that is undefined or cannot be. */
[[nodiscard]] std::optional<StreamTime> streamTime(int64_t utcTime);
/** Seconds of a duration of six digits hhmmss, up to 99:59:59; as for a time. */
[[nodiscard]] std::optional<int64_t> durationSeconds(int64_t digits);

/** A 40-bit UTC time as "2024-11-21 06:30:00 UTC". */
[[nodiscard]] std::string utcTimeText(int64_t utcTime);
/** A duration of six digits as "00:45:00". */
[[nodiscard]] std::string durationDigits(int64_t digits);
/** So many pairs of digits as they are coded: "06:30" of 0x0630. */
[[nodiscard]] std::string codedDigits(int64_t digits, int pairs);

/** "2024-05-17 12:59:55". */
[[nodiscard]] std::string dateAndTime(StreamTime time);
/** "Fri 2024-05-17". */
[[nodiscard]] std::string dayText(StreamTime time);
/** "12:59". */
[[nodiscard]] std::string clockText(StreamTime time);

/** "45 min", "1 h 30 min", "20 s". */
[[nodiscard]] std::string durationText(int64_t seconds);
/** A difference of times: "+00:00:02", "-3 d 02:00:00". */
[[nodiscard]] std::string spanText(int64_t seconds);

}  // namespace tevra::tools
