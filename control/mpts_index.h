#pragma once

#include <cstdint>

namespace tevra {

/** Whether a module may have an MPTS of this index: 0 to 3. Its type may allow fewer. */
[[nodiscard]] constexpr bool isMptsIndex(int32_t index) {
  constexpr int32_t kMptsCount = 4;
  return index >= 0 && index < kMptsCount;
}

}  // namespace tevra
