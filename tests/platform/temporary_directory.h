#pragma once

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <stdexcept>
#include <string>
#include <system_error>

namespace tevra::test {

/** An empty directory of its own, removed with everything in it. */
class TemporaryDirectory {
 public:
  TemporaryDirectory() : path_(testing::TempDir() + "/tornel-platform-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) {
      throw std::runtime_error("no temporary directory");
    }
  }
  ~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(path_, ignored);
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  [[nodiscard]] const std::string& path() const { return path_; }
  [[nodiscard]] std::string operator/(const std::string& relative) const {
    return path_ + "/" + relative;
  }

 private:
  std::string path_;
};

}  // namespace tevra::test
