#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace tevra::test {

/**
 * Whether `packets` are, byte for byte, those of golden/<name>.hex.
 *
 * With TORNEL_UPDATE_GOLDEN=1 in the environment the file is rewritten instead and the result is a
 * failure all the same, so that no run that updates can pass for one that compared. Review the
 * difference before committing it.
 */
[[nodiscard]] ::testing::AssertionResult matchesGolden(const std::string& name,
                                                       const std::vector<std::string>& packets);

/** The same of `text` and golden/<file>. */
[[nodiscard]] ::testing::AssertionResult matchesGoldenText(const std::string& file,
                                                           const std::string& text);

}  // namespace tevra::test
