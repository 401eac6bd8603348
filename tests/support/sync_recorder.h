#pragma once

#include <sys/types.h>

#include <functional>
#include <vector>

/** Takes the place of sync(), syncfs() and fsync(): the tests need no disk to settle, but want to
 * know. */
namespace tevra::test {

struct SyncCall {
  enum class Of { FileSystem, File, Everything };  ///< syncfs, fsync, sync

  Of what;
  off_t size = -1;  ///< of the file behind the descriptor; for sync, of the one now in its place
  bool closed = false;  ///< for sync: whether the descriptor of the last call is closed
};

/** The calls since the last clearSyncCalls, in order. Safe from any thread. */
std::vector<SyncCall> syncCalls();

void clearSyncCalls();

///@{
/** What syncfs or fsync returns from now on: 0, or -1 with errno EIO. */
void setSyncfsResult(int result);
void setFsyncResult(int result);
///@}

/** Called inside every syncfs from now on; an empty one is not. Set while no other thread syncs. */
void onSyncfs(std::function<void()> action);

}  // namespace tevra::test
