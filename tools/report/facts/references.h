#pragma once

#include <set>

#include "tools/report/facts/table_journal.h"

namespace tevra::tools::report {

/** PIDs on which packets have to come, since tables say that they do. */
struct References {
  std::set<int> pmts;    ///< program_map_PIDs of the PAT
  std::set<int> clocks;  ///< PCR_PIDs of PMTs, but the one that means none
  /**
   * Video and audio of PMTs. Audio with an audio_type over 0 (ISO/IEC 13818-1, 2.6.18) may pause,
   * so may subtitles and data (ETSI TR 101 290, 5.2.1).
   */
  std::set<int> media;
};

/** Of the last PAT, and the last PMT of each of its programmes. */
[[nodiscard]] References referencesOf(const TableJournal& journal);

}  // namespace tevra::tools::report
