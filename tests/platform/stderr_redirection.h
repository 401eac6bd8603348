#pragma once

#include <unistd.h>

#include <stdexcept>

namespace tevra::test {

/** Makes standard error another descriptor, which stays its owner's, until the end of its own life.
 */
class StderrRedirection {
 public:
  explicit StderrRedirection(int descriptor) : former_(dup(STDERR_FILENO)) {
    if (former_ < 0 || dup2(descriptor, STDERR_FILENO) < 0) {
      throw std::runtime_error("cannot redirect standard error");
    }
  }
  ~StderrRedirection() {
    dup2(former_, STDERR_FILENO);
    close(former_);
  }
  StderrRedirection(const StderrRedirection&) = delete;
  StderrRedirection& operator=(const StderrRedirection&) = delete;

 private:
  int former_;
};

}  // namespace tevra::test
