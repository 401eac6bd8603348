#include "tests/store/stopped_main_task.h"

#include <sys/wait.h>
#include <unistd.h>

#include <csignal>

#include <gtest/gtest.h>

namespace tevra::test {

StoppedMainTask::StoppedMainTask() {
  const RawMainTask mainTask;  // from here on the process's alone
  port_ = mainTask.port();
  process_ = fork();
  if (process_ == 0) {
    raise(SIGSTOP);
    _exit(0);
  }
  int status = 0;
  EXPECT_EQ(waitpid(process_, &status, WUNTRACED), process_);
  EXPECT_TRUE(WIFSTOPPED(status));
}

StoppedMainTask::~StoppedMainTask() {
  kill(process_, SIGKILL);
  waitpid(process_, nullptr, 0);
}

}  // namespace tevra::test
