#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <utility>
#include <vector>

#include "platform/module_utils.h"
#include "tests/platform/scoped_environment.h"

namespace {

using tevra::test::ScopedEnvironment;

int moduleType() {
  int ignored = 255;
  return get_module_id(&ignored);
}

TEST(Module, TypeIsThatOfFourMptsWithoutTheVariable) {
  const ScopedEnvironment environment("TEVRA_MODULE_TYPE", nullptr);
  EXPECT_EQ(moduleType(), kModuleTypeFourMpts);
}

TEST(Module, TypeIsTheNumberThatTheVariableHoldsAtTheTime) {
  for (const auto& [text, type] :
       std::vector<std::pair<const char*, int>>{{"6", 6}, {"0", 0}, {"-2", -2}}) {
    const ScopedEnvironment environment("TEVRA_MODULE_TYPE", text);
    EXPECT_EQ(moduleType(), type);
  }
}

TEST(Module, TypeIsTheDefaultForWhatIsNoNumber) {
  for (const char* text : {"", " ", "six", "6x", "6 ", " 6", "0x6", "6.0", "-", "99999999999"}) {
    const ScopedEnvironment environment("TEVRA_MODULE_TYPE", text);
    EXPECT_EQ(moduleType(), 5) << "'" << text << "'";
  }
}

TEST(Module, TypeIsAlsoStoredForACallerThatHasAPlaceForIt) {
  const ScopedEnvironment environment("TEVRA_MODULE_TYPE", "6");
  int stored = 255;
  EXPECT_EQ(get_module_id(&stored), 6);
  EXPECT_EQ(stored, 6);
  EXPECT_EQ(get_module_id(nullptr), 6);
}

TEST(Module, SlotIsTheFirstInputModulesWithoutTheVariable) {
  const ScopedEnvironment environment("TEVRA_MODULE_SLOT", nullptr);
  EXPECT_EQ(get_module_slot(), 3);
}

TEST(Module, SlotIsTheNumberInTheVariable) {
  const ScopedEnvironment environment("TEVRA_MODULE_SLOT", "7");
  EXPECT_EQ(get_module_slot(), 7);
}

TEST(Module, SlotIsTheDefaultForWhatIsNoNumber) {
  const ScopedEnvironment environment("TEVRA_MODULE_SLOT", "seven");
  EXPECT_EQ(get_module_slot(), 3);
}

/** What goes to standard output comes out of standard error, where a death test can see it. */
void showVersionOnStandardError(const char* version) {
  std::fflush(stdout);  // What the test program itself printed.
  dup2(STDERR_FILENO, STDOUT_FILENO);
  ShowVersionExitl(0, version);
}

TEST(ShowVersionDeathTest, PrintsTheVersionAsALineOnStandardOutputAndEndsWithStatusZero) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(showVersionOnStandardError("0.9.1"), testing::ExitedWithCode(0),
              testing::StrEq("0.9.1\n"));
}

TEST(ShowVersionDeathTest, WritesNothingToStandardError) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ShowVersionExitl(0, "0.9.1"), testing::ExitedWithCode(0), testing::StrEq(""));
}

}  // namespace
