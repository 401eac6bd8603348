#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "cfdb/conflict_free_db_owner.h"

namespace tevra::test {

/** Owner of a database: answers what it is told to and records what it is asked. Safe from any
 * thread. */
class FakeOwner final : public ConflictFreeDBOwner {
 public:
  int64_t timeOffset() override {
    const std::lock_guard lock(mutex_);
    return offset_;
  }

  bool timeOffsetValid() override {
    const std::lock_guard lock(mutex_);
    return valid_;
  }

  int32_t selectEITVersion(int32_t serviceId, int32_t tableId) override {
    int32_t version = 0;
    {
      const std::lock_guard lock(mutex_);
      calls_.push_back("version " + std::to_string(serviceId) + "/" + std::to_string(tableId));
      int32_t& last = versions_[{serviceId, tableId}];
      last = (last + 1) % kVersions;
      version = last;
    }
    if (onSelect_) {
      onSelect_();
    }
    return version;
  }

  void resetEITRestartCounter(int32_t serviceId) override {
    const std::lock_guard lock(mutex_);
    calls_.push_back("reset " + std::to_string(serviceId));
  }

  void setOffset(int64_t offset, bool valid) {
    const std::lock_guard lock(mutex_);
    offset_ = offset;
    valid_ = valid;
  }

  /** Called inside selectEITVersion, without this object's lock. Set before any other thread runs.
   */
  void onSelect(std::function<void()> action) { onSelect_ = std::move(action); }

  /** "reset SID" and "version SID/TID", in order. */
  std::vector<std::string> calls() {
    const std::lock_guard lock(mutex_);
    return calls_;
  }

 private:
  static constexpr int32_t kVersions = 32;

  std::mutex mutex_;
  int64_t offset_ = 0;
  bool valid_ = false;
  std::map<std::pair<int32_t, int32_t>, int32_t> versions_;
  std::vector<std::string> calls_;
  std::function<void()> onSelect_;
};

}  // namespace tevra::test
