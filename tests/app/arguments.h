#pragma once

#include <initializer_list>
#include <string>
#include <vector>

namespace tevra::test {

/** A command line as main gets it: writable, ended by a null pointer. The program's name comes
 * first. */
class Arguments {
 public:
  Arguments(std::initializer_list<const char*> arguments)
      : Arguments(std::vector<const char*>(arguments)) {}
  explicit Arguments(const std::vector<const char*>& arguments)
      : texts_(arguments.begin(), arguments.end()) {
    for (std::string& text : texts_) {
      pointers_.push_back(text.data());
    }
    pointers_.push_back(nullptr);
  }
  Arguments(const Arguments&) = delete;
  Arguments& operator=(const Arguments&) = delete;

  [[nodiscard]] int count() const { return static_cast<int>(texts_.size()); }
  [[nodiscard]] char** values() { return pointers_.data(); }

 private:
  std::vector<std::string> texts_;
  std::vector<char*> pointers_;
};

}  // namespace tevra::test
