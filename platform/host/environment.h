#pragma once

#include <string>

/**
 * @file
 * The process environment, which stands in for what a device knows about itself. Read anew at
 * every call.
 */
namespace tevra::host {

/** Value of variable `name`; `fallback` when it is absent or empty. */
[[nodiscard]] std::string environmentText(const char* name, const char* fallback);

/** Decimal value of variable `name`; `fallback` when it is absent or not a number that an int
 * holds. */
[[nodiscard]] int environmentNumber(const char* name, int fallback);

}  // namespace tevra::host
