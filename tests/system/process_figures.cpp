#include "tests/system/process_figures.h"

#include <filesystem>
#include <fstream>
#include <iterator>

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

}  // namespace tevra::test
