#include "tests/tools/support/table_intervals.h"

#include <algorithm>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::test {
namespace {

constexpr std::array<int64_t, TableIntervals::kTables> kLimits = {kSystemClock / 10,
                                                                  kSystemClock / 10, kSystemClock};
constexpr std::array<const char*, TableIntervals::kTables> kNames = {"PAT", "PMT", "SDT"};

}  // namespace

void TableIntervals::pcr(int64_t ticks, uint64_t packet) {
  const int64_t step = (ticks - lastPcr_.value_or(ticks) + kPcrModulus) % kPcrModulus;
  if (!lastPcr_) {
    begin();
  } else if (step > kPcrLimit) {
    finish();
    ++clockChanges_;
    begin();
  } else {
    placeWaiting(step, packet);
    time_ += step;
  }
  waiting_.clear();
  lastPcr_ = ticks;
  lastPacket_ = packet;
}

/** What came before the first PCR of a clock counts as come with it. */
void TableIntervals::begin() {
  time_ = 0;
  seen_.fill(0);
}

void TableIntervals::placeWaiting(int64_t step, uint64_t packet) {
  for (const Waiting& waiting : waiting_) {
    const auto share = static_cast<double>(waiting.packet - lastPacket_) /
                       static_cast<double>(packet - lastPacket_);
    see(waiting.table, time_ + static_cast<int64_t>(share * static_cast<double>(step)));
  }
}

void TableIntervals::see(Table table, int64_t time) {
  const int64_t interval = time - seen_.at(table);
  seen_.at(table) = time;
  longest_.at(table) = std::max(longest_.at(table), interval);
  if (interval > kLimits.at(table)) {
    faults_.add(std::string("no ") + kNames.at(table) + " for " +
                std::to_string(interval * 1000 / kSystemClock) + " ms");
  }
}

void TableIntervals::finish() {
  for (const Table table : {kPat, kPmt, kSdt}) {
    see(table, time_);
  }
}

}  // namespace tevra::tools::test
