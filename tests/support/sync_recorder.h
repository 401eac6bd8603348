#pragma once

#include <sys/types.h>

#include <functional>
#include <vector>

/** Takes the place of sync() and syncfs(): the tests need no disk to settle, but want to know. */
namespace tevra::test {

struct SyncCall {
  int fd = -1;          ///< of syncfs, -1 for sync
  off_t size = -1;      ///< of the file behind `fd`; for sync, of that of the last syncfs
  bool closed = false;  ///< for sync: whether the descriptor of the last syncfs is closed
};

/** The calls since the last clearSyncCalls, in order. Safe from any thread. */
std::vector<SyncCall> syncCalls();

void clearSyncCalls();

/** What syncfs returns from now on: 0, or -1 with errno EIO. */
void setSyncfsResult(int result);

/** Called inside every syncfs from now on; an empty one is not. Set while no other thread syncs. */
void onSyncfs(std::function<void()> action);

}  // namespace tevra::test
