#include "tests/system/process_figures.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "tests/support/files.h"
#include "tests/support/sanitizers.h"

namespace tevra::test {

void ProcessFigures::resetPeak() const {
  std::ofstream(directory_ + "clear_refs") << "5";
}

int64_t ProcessFigures::descriptors() const {
  return std::distance(std::filesystem::directory_iterator(directory_ + "fd"), {});
}

double ProcessFigures::processorSeconds() const {
  const std::string stat = readText(directory_ + "stat");
  std::istringstream fields(stat.substr(std::min(stat.size(), stat.rfind(')') + 1)));
  std::string skipped;
  for (int field = 3; field < 14; ++field) {
    fields >> skipped;
  }
  int64_t user = 0;
  int64_t system = 0;
  fields >> user >> system;
  return static_cast<double>(user + system) / static_cast<double>(sysconf(_SC_CLK_TCK));
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
