#pragma once

#include <cstdint>
#include <string>

namespace tevra::tools {

/**
 * `value` divided by 10 to the power of `decimals`, without zeros at its end, and the unit:
 * scaledText(11778000000, 9, "GHz") is "11.778 GHz". `value` is not negative.
 */
[[nodiscard]] std::string scaledText(int64_t value, int decimals, const std::string& unit);

}  // namespace tevra::tools
