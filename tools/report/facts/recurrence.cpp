#include "tools/report/facts/recurrence.h"

#include <algorithm>

namespace tevra::tools::report {

void Recurrence::come(int64_t time) {
  if (last_) {
    const int64_t interval = time - *last_;
    shortest_ = intervals_ == 0 ? interval : std::min(shortest_, interval);
    longest_ = std::max(longest_, interval);
    sum_ += interval;
    ++intervals_;
  }
  last_ = time;
  if (waitingSince_) {
    judge(time);
    waitingSince_ = time;
  }
}

void Recurrence::expect(int64_t time) {
  waitingSince_ = waitingSince_.value_or(time);
}

void Recurrence::expectNoMore(int64_t time) {
  if (waitingSince_) {
    judge(time);
    waitingSince_.reset();
    last_.reset();  // what comes later is another stream
  }
}

void Recurrence::judge(int64_t time) {
  const int64_t wait = time - *waitingSince_;
  longestWait_ = std::max(longestWait_.value_or(wait), wait);
  misses_ += wait > limit_ ? 1 : 0;
}

}  // namespace tevra::tools::report
