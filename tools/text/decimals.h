#pragma once

#include <cstdint>
#include <string>

namespace tevra::tools {

/**
 * `value` divided by 10 to the power of `decimals`, without zeros at its end, and the unit:
 * scaledText(11778000000, 9, "GHz") is "11.778 GHz". `value` is not negative.
 */
[[nodiscard]] std::string scaledText(int64_t value, int decimals, const std::string& unit);

/** The value with so many decimals: fixedText(9.4123, 2) is "9.41". */
[[nodiscard]] std::string fixedText(double value, int decimals);

}  // namespace tevra::tools
