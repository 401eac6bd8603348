#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <new>

#include "tests/support/allocation_hook.h"

namespace tevra::test {

/**
 * Runs `action` with one allocation of operator new failing, the one after `allowed` others. False
 * when it makes fewer. It may raise std::bad_alloc, if that is why.
 */
template <class Action>
bool lacksMemory(size_t allowed, Action action) {
  const AllocationHook failing(
      1, [] { throw std::bad_alloc(); }, allowed);
  try {
    action();
  } catch (const std::bad_alloc&) {
    EXPECT_TRUE(failing.triggered());
  }
  return failing.triggered();
}

}  // namespace tevra::test
