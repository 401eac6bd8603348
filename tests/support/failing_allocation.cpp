#include "tests/support/failing_allocation.h"

#if defined(TORNEL_FAILS_NEW_ALONE)

#include <new>
#include <optional>

#include "tests/support/allocation_hook.h"

namespace tevra::test {
namespace {

std::optional<AllocationHook> hook;  // of the one thread that uses it

}  // namespace

FailingAllocation::FailingAllocation(int number) {
  hook.emplace(
      1, [] { throw std::bad_alloc(); }, static_cast<size_t>(number - 1));
}

FailingAllocation::~FailingAllocation() {
  hook.reset();
}

bool FailingAllocation::failed() const {
  return hook->triggered();
}

// The C library's are never counted.
SparedAllocations::SparedAllocations() = default;
SparedAllocations::~SparedAllocations() = default;

}  // namespace tevra::test

#else

#include <cerrno>
#include <cstddef>

namespace tevra::test {
namespace {

thread_local int left = -1;  // to the one that fails; 0: it has; -1: none will
thread_local bool spared = false;

bool isTheOne() {
  if (spared || left <= 0 || --left > 0) {
    return false;
  }
  errno = ENOMEM;
  return true;
}

}  // namespace

FailingAllocation::FailingAllocation(int number) {
  left = number;
}

FailingAllocation::~FailingAllocation() {
  left = -1;
}

bool FailingAllocation::failed() const {
  return left == 0;
}

SparedAllocations::SparedAllocations() {
  spared = true;
}

SparedAllocations::~SparedAllocations() {
  spared = false;
}

}  // namespace tevra::test

// The whole program's, and its libraries'. glibc keeps its own under other names.
extern "C" {

// NOLINTBEGIN(bugprone-reserved-identifier)
void* __libc_malloc(size_t bytes);
void* __libc_calloc(size_t count, size_t bytes);
void* __libc_realloc(void* memory, size_t bytes);
// NOLINTEND(bugprone-reserved-identifier)

void* malloc(size_t bytes) {
  return tevra::test::isTheOne() ? nullptr : __libc_malloc(bytes);
}

void* calloc(size_t count, size_t bytes) {
  return tevra::test::isTheOne() ? nullptr : __libc_calloc(count, bytes);
}

void* realloc(void* memory, size_t bytes) {
  return tevra::test::isTheOne() ? nullptr : __libc_realloc(memory, bytes);
}

}  // extern "C"

#endif
