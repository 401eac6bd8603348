#pragma once

#include <sys/types.h>

#include "tests/store/raw_main_task.h"

namespace tevra::test {

/** MainTask as a process that listens and has been stopped: the kernel alone takes what comes. */
class StoppedMainTask {
 public:
  StoppedMainTask();
  ~StoppedMainTask();
  StoppedMainTask(const StoppedMainTask&) = delete;
  StoppedMainTask& operator=(const StoppedMainTask&) = delete;

  [[nodiscard]] uint16_t port() const { return port_; }

 private:
  uint16_t port_ = 0;
  pid_t process_ = -1;
};

}  // namespace tevra::test
