#include "cfdb/pid_allocator.h"

#include <map>
#include <utility>

#include "platform/configuration_root.h"
#include "platform/module_utils.h"
#include "store/record_file.h"

namespace tevra {
namespace {

constexpr int32_t kNoTransportStream = 0xFFFF;
constexpr int32_t kPidsPerSlot = 800;
constexpr int32_t kFirstInputSlot = 3;
constexpr int32_t kFirstPoolPid = 100;

/** Wraps where a platform names a slot that no rack has. */
int32_t firstPidOfPool(int32_t chainIndex, int32_t size) {
  const int64_t slot = int64_t{get_module_slot()} - kFirstInputSlot;
  return static_cast<int32_t>(kPidsPerSlot * slot + kFirstPoolPid + int64_t{chainIndex} * size);
}

/** Wraps instead of overflowing: a counter from a damaged file may hold anything. */
int32_t incremented(int32_t counter) {
  return static_cast<int32_t>(static_cast<uint32_t>(counter) + 1U);
}

}  // namespace

int32_t getPIDPollSizePerMPTS() {
  int id = 0;
  const int type = get_module_id(&id);
  switch (type) {
    case kModuleTypeFourMpts:
      return 200;
    case kModuleTypeTwoMptsA:
    case kModuleTypeTwoMptsB:
      return 400;
    default:
      log_function(kLogError, kNoTag, "[%s] Module type [%d] not supported!",
                   "getPIDPollSizePerMPTS", type);
      return 0;
  }
}

PidAllocator::PidAllocator(int32_t chainIndex)
    : PidAllocator(chainIndex, getPIDPollSizePerMPTS()) {}

PidAllocator::PidAllocator(int32_t chainIndex, int32_t poolSize)
    : chainIndex_(chainIndex),
      pidPoolFirst_(firstPidOfPool(chainIndex, poolSize)),
      pidPoolLast_(static_cast<int32_t>(int64_t{pidPoolFirst_} + poolSize - 1)),
      path_(configurationRoot() + "/PIDRemap" + std::to_string(chainIndex)) {
  log_function(kLogWarning, kNoTag, "IN mod slot [%d] PID poll [%d/%d]", get_module_slot(),
               pidPoolFirst_, pidPoolLast_);
  resetPIDRemap();
  load();
}

void PidAllocator::load() {
  PIDRemap stored;
  if (readRecordFromFile(path_, stored) != kRecordFileDone ||
      stored.moduleSlot != get_module_slot()) {
    return;
  }
  RecursiveMutexLock lock(mutex_);
  remap_ = std::move(stored);
}

uint16_t PidAllocator::getConflictFreePID(int32_t inputPid) {
  RecursiveMutexLock lock(mutex_);
  const auto known = remap_.inputToOutput.find(inputPid);
  if (known != remap_.inputToOutput.end()) {
    return static_cast<uint16_t>(known->second);
  }
  const int32_t counter = incremented(remap_.nextPIDCounter);
  // One past the counter, so that the pool's first PID is never used: docs/contract.md, "First PID
  // of a pool".
  const auto outputPid = static_cast<uint16_t>(incremented(counter));
  // Only the first two of these can fail, for lack of memory: the maps stay in step.
  std::map<int32_t, int32_t> allocated = {{inputPid, outputPid}};
  remap_.outputToInput[outputPid] = inputPid;
  remap_.inputToOutput.merge(allocated);
  remap_.nextPIDCounter = counter;
  dirty_ = true;
  warnIfExhausted(int64_t{counter} + 1);
  return outputPid;
}

void PidAllocator::warnIfExhausted(int64_t pid) {
  const bool emptyPool = pidPoolLast_ < pidPoolFirst_;  // the module type has been refused
  if (emptyPool || pid <= pidPoolLast_ || exhaustionLogged_) {
    return;
  }
  exhaustionLogged_ = true;
  log_function(kLogWarning, kNoTag, "[ModChain%d] PID pool exhausted, PID [%d] is beyond [%d]",
               chainIndex_, static_cast<uint16_t>(pid), pidPoolLast_);
}

int32_t PidAllocator::inputPidOf(int32_t outputPid) {
  const auto known = remap_.outputToInput.find(outputPid);
  return known == remap_.outputToInput.end() ? kUnknownPid : known->second;
}

int32_t PidAllocator::getInputPID(int32_t outputPid) {
  RecursiveMutexLock lock(mutex_);
  return inputPidOf(outputPid);
}

void PidAllocator::resolveInputPids(std::vector<PIDItem>& items) {
  RecursiveMutexLock lock(mutex_);
  for (PIDItem& item : items) {
    item.inputPid = inputPidOf(item.outputPid);
  }
}

void PidAllocator::resetPIDRemap() {
  RecursiveMutexLock lock(mutex_);
  remap_.transportStreamId = kNoTransportStream;
  remap_.inputToOutput.clear();
  remap_.outputToInput.clear();
  remap_.nextPIDCounter = static_cast<int32_t>(int64_t{pidPoolFirst_} - 1);
  remap_.moduleSlot = get_module_slot();
  exhaustionLogged_ = false;
}

void PidAllocator::followTransportStream(int32_t transportStreamId) {
  RecursiveMutexLock lock(mutex_);
  if (remap_.transportStreamId == transportStreamId) {
    return;
  }
  resetPIDRemap();  // takes the lock a second time
  remap_.transportStreamId = transportStreamId;
}

void PidAllocator::saveConflictFreeDB() {
  RecursiveMutexLock lock(mutex_);
  if (!dirty_) {
    return;
  }
  std::string reason;
  if (writeRecordToFile(path_, remap_, &reason) != kRecordFileDone) {
    log_function(kLogError, kNoTag, "[ModChain%d] Could not save conflict free database to disk",
                 chainIndex_);
    log_function(kLogDebug, kNoTag, "[ModChain%d] Reason: %s", chainIndex_, reason.c_str());
  }
  dirty_ = false;  // also after a failure: the next new PID tries again
}

}  // namespace tevra
