#include "tests/cfdb/sync_recorder.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <mutex>

namespace {

std::mutex mutex;
std::vector<tevra::test::SyncCall> calls;  // guarded by mutex
int syncfsResult = 0;                      // guarded by mutex
int lastFd = -1;                           // guarded by mutex

}  // namespace

namespace tevra::test {

std::vector<SyncCall> syncCalls() {
  const std::lock_guard lock(mutex);
  return calls;
}

void clearSyncCalls() {
  const std::lock_guard lock(mutex);
  calls.clear();
}

void setSyncfsResult(int result) {
  const std::lock_guard lock(mutex);
  syncfsResult = result;
}

}  // namespace tevra::test

// The linker sends every call of the two functions here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

int __wrap_syncfs(int fd) {
  const std::lock_guard lock(mutex);
  struct stat status {};
  tevra::test::SyncCall& call = calls.emplace_back();
  call.fd = fd;
  call.size = fstat(fd, &status) == 0 ? status.st_size : -1;
  lastFd = fd;
  errno = syncfsResult == 0 ? errno : EIO;
  return syncfsResult;
}

void __wrap_sync() {
  const std::lock_guard lock(mutex);
  calls.emplace_back().closed = fcntl(lastFd, F_GETFD) < 0;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
