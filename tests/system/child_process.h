#pragma once

#include <sys/types.h>

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "tests/platform/temporary_directory.h"
#include "tests/support/patience.h"

namespace tevra::test {

using Environment = std::map<std::string, std::string>;

/** How a process ended. */
struct ProcessEnd {
  int exitStatus = -1;  ///< -1 when a signal ended it
  int signal = 0;       ///< 0 when it exited
};

/**
 * A program as a child process, its standard output and standard error going to files, so that what
 * it has written by the time of an answer can be read at once and a full pipe never holds it up.
 *
 * The child is killed and reaped when the object ends, however the test ends, and by the kernel
 * when the test program dies. Use from the main thread only.
 */
class ChildProcess {
 public:
  struct Setup {
    std::vector<std::string> command;           ///< the program's path, then its arguments
    Environment environment = {};               ///< replaces and extends what is inherited
    std::optional<uint64_t> addressSpace = {};  ///< bytes, as for setrlimit
    std::optional<uid_t> user = {};  ///< runs as this user and the group of that number, no other
  };

  /** Starts the program. Inherited are all variables but NOTIFY_SOCKET and those of the host
   * platform. */
  explicit ChildProcess(const Setup& setup);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  /** Kills the process at once, if it still runs, and reaps it. */
  void kill();

  /** False once the process has ended. */
  [[nodiscard]] bool running();

  [[nodiscard]] pid_t pid() const { return pid_; }

  /** Waits until the process ends by itself; nothing when it does not within kPatience. */
  [[nodiscard]] std::optional<ProcessEnd> waitForEnd();

  [[nodiscard]] std::string standardOutput() const { return contents("out"); }
  [[nodiscard]] std::string standardError() const { return contents("err"); }

 private:
  [[nodiscard]] std::string contents(const char* file) const;

  TemporaryDirectory directory_;
  pid_t pid_ = -1;
  std::optional<ProcessEnd> end_;
};

void pauseShortly();

/** Asks `condition` again and again; false when it has not become true within kPatience. */
template <class Condition>
[[nodiscard]] bool eventually(Condition condition) {
  const auto deadline = std::chrono::steady_clock::now() + kPatience;
  while (!condition()) {
    if (std::chrono::steady_clock::now() > deadline) {
      return false;
    }
    pauseShortly();
  }
  return true;
}

}  // namespace tevra::test
