#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tests/tools/support/faults.h"

namespace tevra::tools::test {

/**
 * Watches how far apart the tables of a stream are, by its PCRs: PAT and PMT at most 100 ms, the
 * SDT at most a second. A packet between two PCRs lies between their times as it lies between their
 * packets. Packets are told by their number in the stream.
 */
class TableIntervals {
 public:
  enum Table : size_t { kPat, kPmt, kSdt, kTables };

  /** What is wrong goes to `faults`, which must outlive this. */
  explicit TableIntervals(Faults& faults) : faults_(faults) {}

  /** A table begins in the packet. */
  void table(Table table, uint64_t packet) { waiting_.push_back({table, packet}); }
  /** The packet has the programme's PCR. Further than 100 ms from the one before it is of another
   * clock, with which all begins anew. */
  void pcr(int64_t ticks, uint64_t packet);
  /** Nothing more comes. */
  void finish();
  /** Packets are missing that this was never given. */
  void forget() { lastPcr_.reset(); }

  /** How often the clock was another. */
  [[nodiscard]] int clockChanges() const { return clockChanges_; }
  /** The longest that a table was missing, in ticks. */
  [[nodiscard]] int64_t longest(Table table) const { return longest_.at(table); }

 private:
  struct Waiting {
    Table table;
    uint64_t packet;
  };

  void begin();
  void placeWaiting(int64_t step, uint64_t packet);
  void see(Table table, int64_t time);

  Faults& faults_;
  std::vector<Waiting> waiting_;  // for the next PCR
  std::optional<int64_t> lastPcr_;
  uint64_t lastPacket_ = 0;
  int64_t time_ = 0;  // of the last PCR since the clock began
  std::array<int64_t, kTables> seen_{};
  std::array<int64_t, kTables> longest_{};
  int clockChanges_ = 0;
};

}  // namespace tevra::tools::test
