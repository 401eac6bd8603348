#pragma once

#include <sys/types.h>

namespace tevra::bench {

/**
 * A MainTask that reads whatever the first MPTS tells it, in a process of its own so that its work
 * is not counted. Raises std::runtime_error when its port is taken.
 */
class ReadingMainTask {
 public:
  ReadingMainTask();
  ~ReadingMainTask();
  ReadingMainTask(const ReadingMainTask&) = delete;
  ReadingMainTask& operator=(const ReadingMainTask&) = delete;

 private:
  pid_t process_;
};

}  // namespace tevra::bench
