#include "platform/configuration_root.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <iostream>
#include <utility>
#include <vector>

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

TEST_F(ConfigurationRootDeathTest, IsTheVariableWithoutTrailingSlashesElseTheDevicesOwn) {
  const std::vector<std::pair<const char*, const char*>> roots = {
      {nullptr, "/etc/tevra/conf"},
      {"", "/etc/tevra/conf"},
      {"/srv/head end", "/srv/head end"},
      {"/srv//headend///", "/srv//headend"},
      {"/", ""}};  // stands for the root of the file system
  for (const auto& [variable, root] : roots) {
    EXPECT_EXIT(printRoot(variable), testing::ExitedWithCode(0), testing::StrEq(root));
  }
}

TEST_F(ConfigurationRootDeathTest, StaysWhatItWasAtTheFirstCall) {
  EXPECT_EXIT(askTwice(), testing::ExitedWithCode(0), testing::StrEq("/first"));
}

TEST_F(ConfigurationRootDeathTest, IsWhatTheProgramNamesInstead) {
  const auto nameAnother = [] {
    setConfigurationRoot("/another");
    printRoot("/machine's");
  };
  EXPECT_EXIT(nameAnother(), testing::ExitedWithCode(0), testing::StrEq("/another"));
}

}  // namespace
}  // namespace tevra
