#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

namespace tevra::test {

/** What a running process takes, as the kernel counts it (proc(5)). */
class ProcessFigures {
 public:
  explicit ProcessFigures(pid_t pid) : directory_("/proc/" + std::to_string(pid) + "/") {}

  /** Kilobytes in memory now. */
  [[nodiscard]] int64_t residentSize() const { return status("VmRSS:"); }

  /** The most kilobytes that have been in memory at once, since the start or resetPeak(). */
  [[nodiscard]] int64_t peakResidentSize() const { return status("VmHWM:"); }

  /** The most kilobytes that were mapped at once, used or not, since the start. */
  [[nodiscard]] int64_t peakVirtualSize() const { return status("VmPeak:"); }

  /** Without effect where the kernel cannot: then peaks are those since the start. */
  void resetPeak() const;

  [[nodiscard]] int64_t descriptors() const;

  /** Of processor time, for itself and in the kernel, since the start; 0 when the process is gone.
   */
  [[nodiscard]] double processorSeconds() const;

 private:
  /** 0 when the process is gone. */
  [[nodiscard]] int64_t status(const std::string& name) const;

  std::string directory_;
};

/** Expects less than `bound` kilobytes, and else says of what. Where a process has memory of others
 * too, this cannot be expected: the test says so, once, and goes on. */
void expectMemoryBelow(int64_t bound, int64_t kilobytes, const std::string& what = "");

}  // namespace tevra::test
