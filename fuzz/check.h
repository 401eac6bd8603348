#pragma once

/** Ends the program with the place and the condition, for the fuzzer to report. */
#define TORNEL_FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : ::tevra::fuzz::fail(__FILE__, __LINE__, #condition))

namespace tevra::fuzz {

[[noreturn]] void fail(const char* file, int line, const char* condition);

}  // namespace tevra::fuzz
