#include "tests/support/sync_recorder.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <mutex>
#include <string_view>
#include <utility>

namespace {

using tevra::test::SyncCall;

std::mutex mutex;
std::vector<SyncCall> calls;            // guarded by mutex
int syncfsResult = 0;                   // guarded by mutex
int fsyncResult = 0;                    // guarded by mutex
int lastFd = -1;                        // guarded by mutex
std::array<char, PATH_MAX> lastFile{};  // guarded by mutex
std::function<void()> action;

/** More calls than a test makes that lets allocations fail: recording must not. */
constexpr size_t kRoom = 64;

/** Where the file behind `fd` belongs: what is written beside another takes its place. */
void rememberFile(int fd) {
  constexpr std::string_view kBeside = ".new";
  lastFd = fd;
  std::array<char, 32> link{};
  std::snprintf(link.data(), link.size(), "/proc/self/fd/%d", fd);
  lastFile.fill('\0');
  (void)!readlink(link.data(), lastFile.data(), lastFile.size() - 1);  // stat finds what failed
  const std::string_view file = lastFile.data();
  if (file.size() > kBeside.size() && file.substr(file.size() - kBeside.size()) == kBeside) {
    lastFile.at(file.size() - kBeside.size()) = '\0';
  }
}

int recorded(SyncCall::Of what, int fd, const int& result) {
  const std::lock_guard lock(mutex);
  struct stat status {};
  calls.push_back({what, fstat(fd, &status) == 0 ? status.st_size : -1, false});
  rememberFile(fd);
  errno = result == 0 ? errno : EIO;
  return result;
}

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

void setFsyncResult(int result) {
  const std::lock_guard lock(mutex);
  fsyncResult = result;
}

void onSyncfs(std::function<void()> newAction) {
  action = std::move(newAction);
}

}  // namespace tevra::test

// The linker sends every call of the three functions here; the names are its own.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {

int __wrap_syncfs(int fd) {
  if (action) {
    action();
  }
  return recorded(SyncCall::Of::FileSystem, fd, syncfsResult);
}

int __wrap_fsync(int fd) {
  return recorded(SyncCall::Of::File, fd, fsyncResult);
}

void __wrap_sync() {
  const std::lock_guard lock(mutex);
  struct stat status {};
  calls.push_back({SyncCall::Of::Everything,
                   stat(lastFile.data(), &status) == 0 ? status.st_size : -1,
                   fcntl(lastFd, F_GETFD) < 0});
}

}  // extern "C"
// NOLINTEND(bugprone-reserved-identifier)
