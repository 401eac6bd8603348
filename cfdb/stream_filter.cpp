#include "cfdb/stream_filter.h"

#include <algorithm>
#include <array>

namespace tevra {

bool isCarriedStreamType(int32_t streamType) {
  static constexpr std::array<int32_t, 10> kCarried = {1, 2, 3, 4, 6, 15, 16, 17, 27, 36};
  return std::find(kCarried.begin(), kCarried.end(), streamType) != kCarried.end();
}

}  // namespace tevra
