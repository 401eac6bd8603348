#pragma once

/** Clang's thread-safety attributes (-Wthread-safety); they expand to nothing for other compilers.
 */
#if defined(__clang__)
#define TEVRA_ATTRIBUTE(x) __attribute__((x))
#else
#define TEVRA_ATTRIBUTE(x)
#endif

#define CAPABILITY(x) TEVRA_ATTRIBUTE(capability(x))
#define SCOPED_CAPABILITY TEVRA_ATTRIBUTE(scoped_lockable)
#define GUARDED_BY(x) TEVRA_ATTRIBUTE(guarded_by(x))
#define REQUIRES(...) TEVRA_ATTRIBUTE(requires_capability(__VA_ARGS__))
#define ACQUIRE(...) TEVRA_ATTRIBUTE(acquire_capability(__VA_ARGS__))
#define RELEASE(...) TEVRA_ATTRIBUTE(release_capability(__VA_ARGS__))
#define TRY_ACQUIRE(...) TEVRA_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
#define EXCLUDES(...) TEVRA_ATTRIBUTE(locks_excluded(__VA_ARGS__))
#define ACQUIRED_BEFORE(...) TEVRA_ATTRIBUTE(acquired_before(__VA_ARGS__))
#define ASSERT_CAPABILITY(x) TEVRA_ATTRIBUTE(assert_capability(x))
#define NO_THREAD_SAFETY_ANALYSIS TEVRA_ATTRIBUTE(no_thread_safety_analysis)
