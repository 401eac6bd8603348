#include "tests/system/soak_eits.h"

#include <cstdlib>
#include <stdexcept>

#include "tests/system/multiplex.h"

namespace tevra::test {
namespace {

constexpr int64_t kMinute = 60;
constexpr int32_t kMaxRestarts = 4;

int64_t fromBcd(int64_t digits) {
  return (digits >> 4 & 0xF) * 10 + (digits & 0xF);
}

/** The reverse of dvbTime. */
int64_t unixTime(int64_t time) {
  constexpr int64_t kSecondsPerDay = 86400;
  constexpr int64_t kMjdOf1970 = 40587;
  return ((time >> 24) - kMjdOf1970) * kSecondsPerDay + fromBcd(time >> 16) * 3600 +
         fromBcd(time >> 8) * 60 + fromBcd(time);
}

EIT moved(EIT eit, int64_t offset) {
  for (EITEvent& event : eit.events) {
    event.startTime = dvbTime(static_cast<std::time_t>(unixTime(event.startTime) - offset));
  }
  return eit;
}

/** Whether all offsets of `some` are a minute or more from all of `others`: that must be sure. */
bool isNew(const std::set<int64_t>& some, const std::set<int64_t>& others) {
  std::set<bool> answers;
  for (const int64_t one : some) {
    for (const int64_t other : others) {
      answers.insert(std::llabs(one - other) >= kMinute);
    }
  }
  if (answers.size() != 1) {
    throw std::logic_error("nobody can know whether this time offset is a new one");
  }
  return *answers.begin();
}

}  // namespace

SoakEits::Restamped SoakEits::set(Kind kind, const EITMap& eits) {
  for (const auto& [serviceId, tables] : eits) {
    for (const auto& [tableId, table] : tables) {
      stored_[kind][serviceId][tableId] = table;
    }
  }
  if (!hasTot_) {
    return {};
  }
  Restamped restamped = restamp(eits);
  file_ = versions_;
  return restamped;
}

SoakEits::Both SoakEits::setTot(std::time_t utc, std::time_t earliest, std::time_t latest) {
  std::set<int64_t> offsets;
  for (std::time_t now = earliest; now <= latest; ++now) {
    offsets.insert(utc - now);
  }
  const bool changed = isNew(offsets, offsets_);
  if (changed) {
    offsets_ = offsets;
    ++offsetChanges_;
  }
  const bool due = changed || !hasTot_;
  hasTot_ = true;
  Both both;
  if (due && !stored_.empty()) {
    both.presentFollowing = restamp(stored_[kPresentFollowing]);
    both.schedule = restamp(stored_[kSchedule]);
    file_ = versions_;
  }
  return both;
}

SoakEits::Restamped SoakEits::restamp(const EITMap& eits) {
  Restamped restamped;
  for (const auto& [serviceId, tables] : eits) {
    Versions& versions = versions_[serviceId];
    versions.restarts = 0;
    for (const auto& [tableId, table] : tables) {
      int32_t& version = versions.ofTables[tableId];
      version = (version + 1) % 32;
      restamped.push_back(table);
      restamped.back().version = version;
    }
  }
  return restamped;
}

bool SoakEits::isMoved(const EIT& restamped, const EIT& notified) {
  std::set<int64_t> possible;
  for (const int64_t offset : offsets_) {
    if (moved(restamped, offset) == notified) {
      possible.insert(offset);
    }
  }
  if (possible.empty()) {
    return false;
  }
  offsets_ = possible;
  return true;
}

void SoakEits::reset() {
  stored_.clear();
  offsets_ = {0};
  hasTot_ = false;
}

void SoakEits::restart() {
  reset();
  versions_.clear();
  for (auto [serviceId, versions] : file_) {
    if (++versions.restarts <= kMaxRestarts) {
      versions_[serviceId] = versions;
    }
  }
}

}  // namespace tevra::test
