#pragma once

#include <optional>

#include "tools/feed/stream_inventory.h"
#include "tools/report/facts/section_tally.h"
#include "tools/report/facts/stream_census.h"
#include "tools/report/facts/stream_intervals.h"
#include "tools/report/facts/table_journal.h"
#include "tools/si/table_demux.h"
#include "tools/stream/ts_packet_reader.h"

namespace tevra::tools::report {

/** All that one reading of a multiplex tells. Its memory does not grow with the stream. */
class StreamSurvey {
 public:
  /**
   * Reads `source` to its end; `onTable` is told of every table, as by a TableDemux. `pidPeriod` is
   * that of 1.6, in seconds. Passes on what `source` and `onTable` raise.
   */
  StreamSurvey(ByteSource& source, int pidPeriod, TableDemux::Consumer onTable);
  StreamSurvey(const StreamSurvey&) = delete;  // its parts refer to each other
  StreamSurvey& operator=(const StreamSurvey&) = delete;

  ///@{
  /** What each of its parts found. */
  [[nodiscard]] const TsPacketReader& reader() const { return reader_; }
  [[nodiscard]] const TableDemux& demux() const { return demux_; }
  [[nodiscard]] const StreamCensus& census() const { return census_; }
  [[nodiscard]] const SectionTally& sections() const { return sections_; }
  [[nodiscard]] const TableJournal& journal() const { return journal_; }
  [[nodiscard]] const StreamInventory& inventory() const { return inventory_; }
  [[nodiscard]] const StreamIntervals& intervals() const { return intervals_; }
  ///@}

  /** All that PAT and PMTs ever referred to. */
  [[nodiscard]] const References& everReferred() const { return everReferred_; }
  /** Seconds of 1.6. */
  [[nodiscard]] int pidPeriod() const { return pidPeriod_; }
  /** From the first to the last packet; nothing without a clock. */
  [[nodiscard]] std::optional<double> seconds() const;

 private:
  void take(const SiTable& table, size_t sections);
  void take(int pid, const SectionSeen& section);
  void follow();

  int pidPeriod_;
  TableDemux::Consumer onTable_;
  StreamCensus census_;
  SectionTally sections_;
  TableJournal journal_;
  StreamInventory inventory_;
  StreamIntervals intervals_;
  References everReferred_;
  TableDemux demux_;
  TsPacketReader reader_;
};

}  // namespace tevra::tools::report
