#pragma once

#include <cstddef>
#include <cstdint>

// What libFuzzer and the replay program call; each target defines the second, isolation.cpp's
// isolate() stands behind the first.
extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv);
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);
