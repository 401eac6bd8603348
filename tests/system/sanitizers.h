#pragma once

namespace tevra::test {

/** True in a build with a sanitizer that brings its own allocator. */
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
inline constexpr bool kSanitized = true;
#else
inline constexpr bool kSanitized = false;
#endif

}  // namespace tevra::test
