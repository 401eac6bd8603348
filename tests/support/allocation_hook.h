#pragma once

#include <cstddef>
#include <functional>

namespace tevra::test {

/**
 * Calls `action` once, inside the first operator new of at least `bytes` bytes that this thread
 * makes during the hook's life, `passed` of them not counted. An action that throws makes the
 * allocation fail with what it throws. One hook per thread at a time.
 */
class AllocationHook {
 public:
  AllocationHook(size_t bytes, std::function<void()> action, size_t passed = 0);
  ~AllocationHook();
  AllocationHook(const AllocationHook&) = delete;
  AllocationHook& operator=(const AllocationHook&) = delete;

  /** Whether the action has been called. */
  [[nodiscard]] bool triggered() const { return triggered_; }

  /** For operator new. */
  void allocating(size_t bytes);

 private:
  size_t bytes_;
  std::function<void()> action_;
  size_t passed_;
  bool triggered_ = false;
};

}  // namespace tevra::test
