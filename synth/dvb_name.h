#pragma once

#include <cstddef>
#include <string>

namespace tevra {

/**
 * The first `maxSize` bytes of a DVB text (EN 300 468 annex A) or fewer: never half a character,
 * whatever table its selector names.
 */
[[nodiscard]] std::string cutDvbText(const std::string& text, size_t maxSize);

}  // namespace tevra
