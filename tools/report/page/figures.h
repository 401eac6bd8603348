#pragma once

#include <cstdint>
#include <string>

namespace tevra::tools::report {

/** "1.60 Mbit/s", "64.2 kbit/s", "760 bit/s": three digits that mean something. */
[[nodiscard]] std::string bitRateText(double bitsPerSecond);
/** "38.3 %"; "<0.1 %" for what is more than nothing. */
[[nodiscard]] std::string shareText(double share);
/** "10 013": groups of three digits behind thin, unbreakable blanks. */
[[nodiscard]] std::string groupedText(uint64_t number);
/** "9.41 s", "2 min 5 s". */
[[nodiscard]] std::string lengthText(double seconds);
/** A coordinate of a picture: at most two decimals, no zeros at the end. */
[[nodiscard]] std::string coordinate(double value);

}  // namespace tevra::tools::report
