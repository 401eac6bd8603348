#include "bench/memory_use.h"

#include <malloc.h>

#include <fstream>
#include <stdexcept>
#include <string>

namespace tevra::bench {
namespace {

int64_t statusValue(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string word; status >> word;) {
    if (word == key + ":") {
      int64_t value = 0;
      status >> value;
      return value;
    }
  }
  throw std::runtime_error("the kernel does not tell " + key);
}

/** Makes the peak what is resident now. */
void resetPeak() {
  std::ofstream("/proc/self/clear_refs") << 5;
}

}  // namespace

MemoryUse::MemoryUse() {
  (void)malloc_trim(0);  // what was freed before would hide what is taken now
  resetPeak();
  before_ = statusValue("VmRSS");
}

int64_t MemoryUse::growth() const {
  return statusValue("VmRSS") - before_;
}

int64_t MemoryUse::peakGrowth() const {
  return statusValue("VmHWM") - before_;
}

}  // namespace tevra::bench
