#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/system/child_process.h"

namespace tevra::test {

/** A system call as strace tells of it. */
struct SystemCall {
  std::string name;
  std::vector<std::string> arguments;  ///< as strace writes them, but texts as they are
  int64_t result = -1;                 ///< -1 of a call that failed or never returned
};

/**
 * strace on the server thread of a daemon, which makes all its saves, from construction to
 * destruction or the daemon's end. Calls of each name are counted from the construction on.
 */
class Tracer {
 public:
  /** `options` as strace has them. Every further call is traced when this returns, if attached().
   */
  Tracer(pid_t daemon, std::vector<std::string> options);

  /** False where there is no strace, or nothing may be traced. */
  [[nodiscard]] bool attached() const { return attached_; }

  /** Lets go of the thread and gives its calls in order. */
  [[nodiscard]] std::vector<SystemCall> calls();

 private:
  TemporaryDirectory directory_;
  ChildProcess strace_;
  bool attached_ = false;
};

}  // namespace tevra::test
