#include "tests/support/allocation_hook.h"

#include <cstdlib>
#include <new>
#include <utility>

namespace tevra::test {
namespace {

thread_local AllocationHook* hookOfThread = nullptr;

}  // namespace

AllocationHook::AllocationHook(size_t bytes, std::function<void()> action, size_t passed)
    : bytes_(bytes), action_(std::move(action)), passed_(passed) {
  hookOfThread = this;
}

AllocationHook::~AllocationHook() {
  hookOfThread = nullptr;
}

void AllocationHook::allocating(size_t bytes) {
  if (bytes < bytes_ || triggered_) {
    return;
  }
  if (passed_ > 0) {
    --passed_;
    return;
  }
  triggered_ = true;
  action_();
}

}  // namespace tevra::test

// The whole program's. A sanitizer's forms for arrays, and those that raise nothing, would not call
// these for single objects.

void* operator new(size_t bytes) {
  if (tevra::test::hookOfThread != nullptr) {
    tevra::test::hookOfThread->allocating(bytes);
  }
  if (void* memory = std::malloc(bytes == 0 ? 1 : bytes)) {
    return memory;
  }
  throw std::bad_alloc();
}

void* operator new(size_t bytes, const std::nothrow_t& /*tag*/) noexcept {
  try {
    return operator new(bytes);
  } catch (...) {
    return nullptr;
  }
}

void operator delete(void* memory) noexcept {
  std::free(memory);
}

void operator delete(void* memory, size_t) noexcept {
  std::free(memory);
}

void* operator new[](size_t bytes) {
  return operator new(bytes);
}

void* operator new[](size_t bytes, const std::nothrow_t& tag) noexcept {
  return operator new(bytes, tag);
}

void operator delete[](void* memory) noexcept {
  std::free(memory);
}

void operator delete[](void* memory, size_t) noexcept {
  std::free(memory);
}
