#include "tools/report/facts/stream_intervals.h"

namespace tevra::tools::report {
namespace {

/** Of tables, held back until their time is known; more come of no stream that means well. */
constexpr size_t kMostChanges = 256;

/** Has what is in `now` and was not in `before` come, and what no longer is come no more. */
template <class Part>
void replace(const std::set<int>& before, const std::set<int>& now, int64_t time, Part part) {
  for (const int pid : before) {
    if (now.count(pid) == 0) {
      part(pid).expectNoMore(time);
    }
  }
  for (const int pid : now) {
    part(pid).expect(time);
  }
}

}  // namespace

StreamIntervals::StreamIntervals(int pidPeriod)
    : pidPeriod_(pidPeriod * kSystemClock),
      pids_(kPidCount),
      times_([this](const PacketMark& mark, uint64_t number, int64_t time) {
        take(mark, number, time);
      }) {}

void StreamIntervals::refer(References references) {
  if (coming_.size() == kMostChanges) {
    coming_.pop_back();  // as if it had not been: what comes later says more
  }
  coming_.emplace_back(times_.last(), std::move(references));
}

PidIntervals& StreamIntervals::at(int pid) {
  std::unique_ptr<PidIntervals>& entry = pids_[static_cast<size_t>(pid)];
  if (!entry) {
    entry = std::make_unique<PidIntervals>(pidPeriod_);
  }
  return *entry;
}

void StreamIntervals::take(const PacketMark& mark, uint64_t number, int64_t time) {
  if (!span_) {
    at(kPatPid).tables.expect(time);
  }
  span_ = time;
  if (mark.hasTable || mark.pcr) {
    PidIntervals& pid = at(mark.pid);
    if (mark.hasTable) {
      pid.tables.come(time);
    }
    if (mark.pcr) {
      pid.pcrs.come(time);
    }
  }
  if (PidIntervals* pid = pids_[mark.pid].get()) {
    pid->packets.come(time);
    if (mark.hasPts) {
      pid->ptss.come(time);
    }
  }
  repeatTables(mark, time);
  while (!coming_.empty() && coming_.front().first <= number) {
    expect(coming_.front().second, time);
    coming_.pop_front();
  }
}

void StreamIntervals::repeatTables(const PacketMark& mark, int64_t time) {
  if (mark.pcr && current_.clocks.count(mark.pid) != 0 && repeated_.size() < kMostClocks) {
    repeated_.try_emplace(mark.pid, mark.pid);
  }
  for (auto& entry : repeated_) {
    RepeatedTables& tables = entry.second;
    const auto moment = tables.clock.at(mark.pid, mark.pcr, mark.discontinuity);
    const TableRepetition::Due due = tables.repetition.before(moment.time, moment.horizon);
    if (due.patAndPmt) {
      tables.patAndPmt.come(time);
    }
    if (due.sdt) {
      tables.sdt.come(time);
    }
  }
}

const RepeatedTables* StreamIntervals::repeated(int pcrPid) const {
  const auto tables = repeated_.find(pcrPid);
  return tables != repeated_.end() && tables->second.clock.isMeasured() ? &tables->second : nullptr;
}

void StreamIntervals::expect(const References& references, int64_t time) {
  replace(current_.pmts, references.pmts, time,
          [this](int pid) -> Recurrence& { return at(pid).tables; });
  replace(current_.clocks, references.clocks, time,
          [this](int pid) -> Recurrence& { return at(pid).pcrs; });
  replace(current_.media, references.media, time,
          [this](int pid) -> Recurrence& { return at(pid).packets; });
  replace(current_.media, references.media, time,
          [this](int pid) -> Recurrence& { return at(pid).ptss; });
  current_ = references;
}

void StreamIntervals::finish() {
  times_.finish();
  if (span_) {
    expect({}, *span_);
    at(kPatPid).tables.expectNoMore(*span_);
  }
}

}  // namespace tevra::tools::report
