#include "tests/system/process_figures.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>

#include "tests/support/sanitizers.h"

namespace tevra::test {

void ProcessFigures::resetPeak() const {
  std::ofstream(directory_ + "clear_refs") << "5";
}

int64_t ProcessFigures::descriptors() const {
  return std::distance(std::filesystem::directory_iterator(directory_ + "fd"), {});
}

int64_t ProcessFigures::status(const std::string& name) const {
  std::ifstream file(directory_ + "status");
  for (std::string word; file >> word;) {
    if (word == name) {
      int64_t value = 0;
      file >> value;
      return value;
    }
  }
  return 0;
}

void expectMemoryBelow(int64_t bound, int64_t kilobytes, const std::string& what) {
  if (!kHasForeignMemory) {
    EXPECT_LT(kilobytes, bound) << what;
    return;
  }
  static const testing::TestInfo* said = nullptr;
  const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
  if (said != test) {
    said = test;
    std::cout
        << "not asserted here: bounds on memory, of which a sanitizer or an emulator has its own\n";
  }
}

}  // namespace tevra::test
