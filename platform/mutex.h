#pragma once

#include <mutex>

#include "platform/thread_annotations.h"

namespace tevra {

/**
 * A standard mutex that clang's analysis can see.
 *
 * Meets the standard's Lockable requirements, so std::scoped_lock can take several at once. lock()
 * raises std::system_error when the platform refuses.
 */
template <class Native>
class CAPABILITY("mutex") AnnotatedMutex {
 public:
  AnnotatedMutex() = default;
  AnnotatedMutex(const AnnotatedMutex&) = delete;
  AnnotatedMutex& operator=(const AnnotatedMutex&) = delete;

  /** Waits for the mutex. A Mutex must not be held by the caller already, a RecursiveMutex may. */
  void lock() ACQUIRE() { native_.lock(); }
  void unlock() RELEASE() { native_.unlock(); }  ///< Precondition: the caller holds it.
  /** Takes the mutex if that needs no waiting; false otherwise. */
  [[nodiscard]] bool try_lock() TRY_ACQUIRE(true) { return native_.try_lock(); }

  /** Tells the analysis, not the program, that the caller holds the mutex: after a std::scoped_lock
   * of several. */
  void assertHeld() const ASSERT_CAPABILITY(this) {}

 private:
  Native native_;
};

/** For what takes it once. */
using Mutex = AnnotatedMutex<std::mutex>;
/** For what may take it again while it holds it. */
using RecursiveMutex = AnnotatedMutex<std::recursive_mutex>;

/** Holds one mutex for its own lifetime. */
template <class MutexType>
class SCOPED_CAPABILITY LockGuard {
 public:
  /** Takes `mutex`, which must outlive the guard. */
  explicit LockGuard(MutexType& mutex) ACQUIRE(mutex) : mutex_(mutex) { mutex_.lock(); }
  ~LockGuard() RELEASE() { mutex_.unlock(); }
  LockGuard(const LockGuard&) = delete;
  LockGuard& operator=(const LockGuard&) = delete;

 private:
  MutexType& mutex_;
};

using MutexLock = LockGuard<Mutex>;                    ///< of a Mutex
using RecursiveMutexLock = LockGuard<RecursiveMutex>;  ///< of a RecursiveMutex

}  // namespace tevra
