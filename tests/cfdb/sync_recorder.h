#pragma once

#include <sys/types.h>

#include <vector>

/** Takes the place of sync() and syncfs(): the tests need no disk to settle, but want to know. */
namespace tevra::test {

struct SyncCall {
  int fd = -1;          ///< of syncfs, -1 for sync
  off_t size = -1;      ///< of the file behind `fd`
  bool closed = false;  ///< for sync: whether the descriptor of the last syncfs is closed
};

/** The calls since the last clearSyncCalls, in order. Safe from any thread. */
std::vector<SyncCall> syncCalls();

void clearSyncCalls();

/** What syncfs returns from now on: 0, or -1 with errno EIO. */
void setSyncfsResult(int result);

}  // namespace tevra::test
