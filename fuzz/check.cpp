#include "fuzz/check.h"

#include <cstdio>
#include <cstdlib>

namespace tevra::fuzz {

void fail(const char* file, int line, const char* condition) {
  std::fprintf(stderr, "%s:%d: does not hold: %s\n", file, line, condition);
  std::abort();
}

}  // namespace tevra::fuzz
