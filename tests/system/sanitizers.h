#pragma once

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

}  // namespace tevra::test
