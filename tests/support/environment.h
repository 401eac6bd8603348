#pragma once

#include <cstdint>
#include <cstdlib>

namespace tevra::test {

/** The number that the environment has under `name`, or another. */
inline int64_t fromEnvironment(const char* name, int64_t otherwise) {
  const char* text = std::getenv(name);
  return text == nullptr ? otherwise : std::atoll(text);
}

}  // namespace tevra::test
