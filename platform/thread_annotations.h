#pragma once

/**
 * @file
 * Clang's thread-safety attributes (-Wthread-safety); they expand to nothing for other compilers.
 */
#if defined(__clang__)
/** Attribute `x` where the compiler knows it. */
#define TEVRA_ATTRIBUTE(x) __attribute__((x))
#else
#define TEVRA_ATTRIBUTE(x)
#endif

/** On a class: it is a lock, which warnings call `x`. */
#define CAPABILITY(x) TEVRA_ATTRIBUTE(capability(x))
/** On a class: it holds a lock for its own lifetime. */
#define SCOPED_CAPABILITY TEVRA_ATTRIBUTE(scoped_lockable)
/** On a member: it is touched only while `x` is held. */
#define GUARDED_BY(x) TEVRA_ATTRIBUTE(guarded_by(x))
/** On a function: the caller holds these. */
#define REQUIRES(...) TEVRA_ATTRIBUTE(requires_capability(__VA_ARGS__))
/** On a function: it takes these, or the object itself, and keeps them. */
#define ACQUIRE(...) TEVRA_ATTRIBUTE(acquire_capability(__VA_ARGS__))
/** On a function: it lets go of these, or of the object itself. */
#define RELEASE(...) TEVRA_ATTRIBUTE(release_capability(__VA_ARGS__))
/** On a function: it takes the object when it returns the argument. */
#define TRY_ACQUIRE(...) TEVRA_ATTRIBUTE(try_acquire_capability(__VA_ARGS__))
/** On a function: the caller holds none of these. */
#define EXCLUDES(...) TEVRA_ATTRIBUTE(locks_excluded(__VA_ARGS__))
/** On a lock: of the two it is taken first. */
#define ACQUIRED_BEFORE(...) TEVRA_ATTRIBUTE(acquired_before(__VA_ARGS__))
/** On a function: after it the analysis counts `x` as held. */
#define ASSERT_CAPABILITY(x) TEVRA_ATTRIBUTE(assert_capability(x))
