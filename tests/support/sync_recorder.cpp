#include "tests/support/sync_recorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <mutex>
#include <utility>

namespace {

std::mutex mutex;
std::vector<tevra::test::SyncCall> calls;  // guarded by mutex
int syncfsResult = 0;                      // guarded by mutex
int lastFd = -1;                           // guarded by mutex
std::array<char, PATH_MAX> lastFile{};     // guarded by mutex
std::function<void()> action;

/** More calls than a test makes that lets allocations fail: recording must not. */
constexpr size_t kRoom = 16;

}  // namespace

namespace tevra::test {

std::vector<SyncCall> syncCalls() {
  const std::lock_guard lock(mutex);
  return calls;
}

void clearSyncCalls() {
  const std::lock_guard lock(mutex);
  calls.clear();
  calls.reserve(kRoom);
}

void setSyncfsResult(int result) {
  const std::lock_guard lock(mutex);
  syncfsResult = result;
}

void onSyncfs(std::function<void()> newAction) {
  action = std::move(newAction);
}

}  // namespace tevra::test

// The linker sends every call of the two functions here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

int __wrap_syncfs(int fd) {
  if (action) {
    action();
  }
  const std::lock_guard lock(mutex);
  struct stat status {};
  tevra::test::SyncCall& call = calls.emplace_back();
  call.fd = fd;
  call.size = fstat(fd, &status) == 0 ? status.st_size : -1;
  lastFd = fd;
  std::array<char, 32> link{};
  std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
  lastFile.fill('\0');
  (void)!readlink(link.data(), lastFile.data(), lastFile.size() - 1);  // stat finds what failed
  errno = syncfsResult == 0 ? errno : EIO;
  return syncfsResult;
}

void __wrap_sync() {
  const std::lock_guard lock(mutex);
  struct stat status {};
  tevra::test::SyncCall& call = calls.emplace_back();
  call.size = stat(lastFile.data(), &status) == 0 ? status.st_size : -1;
  call.closed = fcntl(lastFd, F_GETFD) < 0;
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
