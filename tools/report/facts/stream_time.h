#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "tools/report/facts/report_data.h"

namespace tevra::tools::report {

///@{
/** In seconds; a StreamTime that is a multiple of kDay is a midnight. */
inline constexpr int64_t kMinute = 60;
inline constexpr int64_t kHour = 60 * kMinute;
inline constexpr int64_t kDay = 24 * kHour;
///@}

/** Of a 40-bit UTC time (EN 300 468 annex C); nothing where its digits are none or out of range. */
[[nodiscard]] std::optional<StreamTime> streamTime(int64_t utcTime);

/** Of six BCD digits hhmmss; nothing where they are none or out of range. */
[[nodiscard]] std::optional<int64_t> secondsOf(int bcdDuration);

/** "2024-05-17 12:59:55". Here and below `time` is not negative and before the year 2217. */
[[nodiscard]] std::string dateAndTime(StreamTime time);
/** "Fri 2024-05-17". */
[[nodiscard]] std::string dayText(StreamTime time);
/** "12:59". */
[[nodiscard]] std::string clockText(StreamTime time);

/** "45 min", "1 h 30 min", "20 s". */
[[nodiscard]] std::string durationText(int64_t seconds);

}  // namespace tevra::tools::report
