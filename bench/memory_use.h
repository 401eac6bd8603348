#pragma once

#include <cstdint>

namespace tevra::bench {

/** How the resident memory of this process grows from construction on, in kB. */
class MemoryUse {
 public:
  MemoryUse();

  /** Now; less than 0 when it shrank. */
  [[nodiscard]] int64_t growth() const;
  /** At its largest. */
  [[nodiscard]] int64_t peakGrowth() const;

 private:
  int64_t before_;
};

}  // namespace tevra::bench
