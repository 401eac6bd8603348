#include "fuzz/isolation.h"
#include "fuzz/target.h"

int LLVMFuzzerInitialize(int* /*argc*/, char*** /*argv*/) {
  tevra::fuzz::isolate();
  return 0;
}
