#include "platform/configuration_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>

namespace tevra {
namespace {

/** Ends the process. The root is fixed once asked for, so every value needs a process of its own.
 */
[[noreturn]] void printRoot(const char* variable) {
  if (variable == nullptr) {
    unsetenv("TEVRA_CONF_ROOT");
  } else {
    setenv("TEVRA_CONF_ROOT", variable, 1);
  }
  std::cerr << configurationRoot();
  std::exit(0);
}

[[noreturn]] void askTwice() {
  setenv("TEVRA_CONF_ROOT", "/first", 1);
  (void)configurationRoot();  // Asked for once; the second answer is the one to look at.
  printRoot("/second");
}

class ConfigurationRootDeathTest : public testing::Test {
 protected:
  ConfigurationRootDeathTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(ConfigurationRootDeathTest, IsTheDevicesOwnWithoutTheVariable) {
  EXPECT_EXIT(printRoot(nullptr), testing::ExitedWithCode(0), testing::StrEq("/etc/tevra/conf"));
}

TEST_F(ConfigurationRootDeathTest, IsTheDevicesOwnForAnEmptyVariable) {
  EXPECT_EXIT(printRoot(""), testing::ExitedWithCode(0), testing::StrEq("/etc/tevra/conf"));
}

TEST_F(ConfigurationRootDeathTest, IsTheValueOfTheVariable) {
  EXPECT_EXIT(printRoot("/srv/head end"), testing::ExitedWithCode(0),
              testing::StrEq("/srv/head end"));
}

TEST_F(ConfigurationRootDeathTest, LosesTrailingSlashes) {
  EXPECT_EXIT(printRoot("/srv//headend///"), testing::ExitedWithCode(0),
              testing::StrEq("/srv//headend"));
}

TEST_F(ConfigurationRootDeathTest, IsEmptyForTheRootOfTheFileSystem) {
  EXPECT_EXIT(printRoot("/"), testing::ExitedWithCode(0), testing::StrEq(""));
}

TEST_F(ConfigurationRootDeathTest, StaysWhatItWasAtTheFirstCall) {
  EXPECT_EXIT(askTwice(), testing::ExitedWithCode(0), testing::StrEq("/first"));
}

}  // namespace
}  // namespace tevra
