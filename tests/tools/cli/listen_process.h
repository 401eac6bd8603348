#pragma once

#include <sys/types.h>

#include <map>
#include <string>
#include <vector>

namespace tevra::tools::test {

/** tornelctl listen as a process of its own; killed if it is still there at the end. */
class ListenProcess {
 public:
  struct Setup {
    std::vector<std::string> arguments = {};              ///< besides --port
    std::map<std::string, std::string> environment = {};  ///< added to the test's
    bool onTerminal = false;                              ///< standard output is one
  };

  explicit ListenProcess(int port) : ListenProcess(port, Setup()) {}
  ListenProcess(int port, const Setup& setup);
  ~ListenProcess();
  ListenProcess(const ListenProcess&) = delete;
  ListenProcess& operator=(const ListenProcess&) = delete;

  // The next line; what there is when the process has ended.
  [[nodiscard]] std::string outLine() const;
  [[nodiscard]] std::string errLine() const;

  void signal(int number) const;
  /** Reads no more of standard output. */
  void closeOut();

  /** The status that waitpid gives. */
  int wait();
  /** The exit status; -1 when a signal ended it. */
  int exitStatus();

 private:
  pid_t pid_ = -1;
  int out_ = -1;
  int err_ = -1;
};

/** A port that nobody listens on. */
[[nodiscard]] int freePort();

}  // namespace tevra::tools::test
