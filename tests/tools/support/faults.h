#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tevra::tools::test {

/** What was found wrong, a line each: the first ones in full, of the rest the number. */
class Faults {
 public:
  void add(const std::string& fault) {
    ++count_;
    if (lines_.size() < kKept) {
      lines_.push_back(fault);
    }
  }
  [[nodiscard]] size_t count() const { return count_; }
  [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }

 private:
  static constexpr size_t kKept = 20;

  size_t count_ = 0;
  std::vector<std::string> lines_;
};

}  // namespace tevra::tools::test
