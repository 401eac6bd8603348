#pragma once

#include <chrono>

namespace tevra::test {

/** Longer than anything waited for takes on a loaded machine under a sanitizer. */
inline constexpr std::chrono::seconds kPatience{60};

}  // namespace tevra::test
