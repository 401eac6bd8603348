#pragma once

#include "tests/support/emulation.h"

// g++ has a macro for each sanitizer, clang 14 a feature.
#if defined(__has_feature)
#define TORNEL_HAS_FEATURE(feature) __has_feature(feature)
#else
#define TORNEL_HAS_FEATURE(feature) 0
#endif

namespace tevra::test {

/** True with AddressSanitizer, which is always built together with UndefinedBehaviorSanitizer. */
#if defined(__SANITIZE_ADDRESS__) || TORNEL_HAS_FEATURE(address_sanitizer)
inline constexpr bool kAddressSanitized = true;
#else
inline constexpr bool kAddressSanitized = false;
#endif

#if defined(__SANITIZE_THREAD__) || TORNEL_HAS_FEATURE(thread_sanitizer)
inline constexpr bool kThreadSanitized = true;
#else
inline constexpr bool kThreadSanitized = false;
#endif

/** True in a build with a sanitizer that brings its own allocator. */
inline constexpr bool kSanitized = kAddressSanitized || kThreadSanitized;

/** True where a program takes about ten times as long as it takes its users. */
inline constexpr bool kSlowed = kSanitized || kEmulated;

/** True where a process has more memory than its program asked for: a sanitizer keeps what is
 * freed, an emulator keeps the code that it translates. A bound on memory says nothing there. */
inline constexpr bool kHasForeignMemory = kSanitized || kEmulated;

}  // namespace tevra::test

#undef TORNEL_HAS_FEATURE
