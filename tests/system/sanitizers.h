#pragma once

#include "tests/emulation.h"

namespace tevra::test {

/** True in a build with a sanitizer that brings its own allocator. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

/** True with AddressSanitizer, which is always built together with UndefinedBehaviorSanitizer. */
#if defined(__SANITIZE_ADDRESS__)
inline constexpr bool kAddressSanitized = true;
#else
inline constexpr bool kAddressSanitized = false;
#endif

/** True where a program takes about ten times as long as it takes its users. */
inline constexpr bool kSlowed = kSanitized || kEmulated;

/** True where a process has more memory than its program asked for: a sanitizer keeps what is
 * freed, an emulator keeps the code that it translates. */
inline constexpr bool kHasForeignMemory = kSanitized || kEmulated;

}  // namespace tevra::test
