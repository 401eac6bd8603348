#pragma once

namespace tevra::test {

/**
 * Makes one allocation of this thread fail: the `number`-th of its life, counted from 1.
 * Allocations are those of the C library, libdvbpsi's among them; beside a sanitizer, which has its
 * own, those of operator new alone. One object at a time.
 */
class FailingAllocation {
 public:
  explicit FailingAllocation(int number);
  ~FailingAllocation();
  FailingAllocation(const FailingAllocation&) = delete;
  FailingAllocation& operator=(const FailingAllocation&) = delete;

  /** Whether there were as many. */
  [[nodiscard]] bool failed() const;
};

/** While it lives no allocation of this thread fails, nor is it counted. */
class SparedAllocations {
 public:
  SparedAllocations();
  ~SparedAllocations();
  SparedAllocations(const SparedAllocations&) = delete;
  SparedAllocations& operator=(const SparedAllocations&) = delete;
};

}  // namespace tevra::test
