#pragma once

#include <string>

namespace tevra::tools {

/** Two lower-case hexadecimal digits per byte. */
[[nodiscard]] std::string hexDigits(const std::string& bytes);

}  // namespace tevra::tools
