#pragma once

#include <cstdint>
#include <string>

#include "platform/mutex.h"
#include "records/records.h"

namespace tevra {

/** What getInputPID returns for an output PID that was never handed out: docs/contract.md, "Missing
 * programme". */
inline constexpr int32_t kUnknownPid = 0xFFFF;

/** Output PIDs reserved for one MPTS of this module, by module type: 200 or 400; 0, logged at level
 * 3, if unknown. */
[[nodiscard]] int32_t getPIDPollSizePerMPTS();

/**
 * Gives every input PID of a module chain an output PID from the chain's pool, the same one for as
 * long as the mapping lives, and keeps the mapping in "PIDRemap<chain>" below the configuration
 * root.
 *
 * The pool begins at 800 * (slot - 3) + 100 + chain * size. Allocation only counts up: the first
 * PID after a reset is the pool's first plus one, PIDs are never reused, and past the pool's end it
 * goes on counting, which is logged once per reset at level 4, for an empty pool never. No input
 * PID is treated specially: docs/contract.md, "First PID of a pool" and "No PID is special".
 *
 * Callable from any thread; every operation takes the PID lock, which is recursive. Callers may
 * hold a table lock, never the other way round.
 */
class PidAllocator {
 public:
  /** Takes the mapping from the file if that was made in this slot; otherwise starts from a reset,
   * silently. */
  explicit PidAllocator(int32_t chainIndex);

  /** The output PID of `inputPid`, allocated when new. std::bad_alloc leaves the mapping as it was.
   */
  [[nodiscard]] uint16_t getConflictFreePID(int32_t inputPid);

  /** The input PID of `outputPid`, or kUnknownPid. Never allocates. */
  [[nodiscard]] int32_t getInputPID(int32_t outputPid);

  /** Gives each of `items` the input PID of its output PID, as getInputPID, under one lock. */
  void resolveInputPids(std::vector<PIDItem>& items);

  /** Forgets the mapping, which then belongs to transport stream 0xFFFF. What is unsaved stays so.
   */
  void resetPIDRemap();

  /** Restarts the mapping when it belongs to another transport stream than `transportStreamId`. */
  void followTransportStream(int32_t transportStreamId);

  /**
   * Writes the file if a PID was allocated since the last call. A failure is logged at level 3 and
   * tried again only after the next new PID.
   */
  void saveConflictFreeDB();

  /** First PID of the pool, which itself is never handed out. */
  [[nodiscard]] int32_t pidPoolFirst() const { return pidPoolFirst_; }

  /** Last PID of the pool; allocation goes on beyond it. */
  [[nodiscard]] int32_t pidPoolLast() const { return pidPoolLast_; }

 private:
  PidAllocator(int32_t chainIndex, int32_t poolSize);
  void load();
  [[nodiscard]] int32_t inputPidOf(int32_t outputPid) REQUIRES(mutex_);
  void warnIfExhausted(int64_t pid) REQUIRES(mutex_);

  const int32_t chainIndex_;
  const int32_t pidPoolFirst_;
  const int32_t pidPoolLast_;
  const std::string path_;

  RecursiveMutex mutex_;
  PIDRemap remap_ GUARDED_BY(mutex_);
  bool dirty_ GUARDED_BY(mutex_) = false;
  bool exhaustionLogged_ GUARDED_BY(mutex_) = false;
};

}  // namespace tevra
