#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "tools/si/section_gatherer.h"

namespace tevra::tools::report {

/** Sections of one kind of table on one PID. */
struct SectionCount {
  uint64_t sound = 0;      ///< their lengths and CRC_32 are right
  uint64_t wrongCrc = 0;   ///< the table_id may be wrong as well
  uint64_t malformed = 0;  ///< a right CRC_32, and lengths that do not add up
};

/** Counts sections by PID and table, repetitions included. */
class SectionTally {
 public:
  /** A section whose end came on the PID. */
  void add(int pid, const SectionSeen& section);

  /** By table_id; empty for a PID without sections. */
  [[nodiscard]] const std::map<int, SectionCount>& on(int pid) const;
  /** All of the PID. */
  [[nodiscard]] uint64_t sections(int pid) const;
  /** How often the first section of the table came, whichever its version. */
  [[nodiscard]] uint64_t arrivals(int tableId, int extension) const;

 private:
  std::map<int, std::map<int, SectionCount>> counts_;      // by PID, then table_id
  std::map<std::pair<int, int>, uint64_t> firstSections_;  // by table_id and its extension
};

}  // namespace tevra::tools::report
