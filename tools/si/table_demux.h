#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "tools/si/section_gatherer.h"
#include "tools/si/si_table.h"
#include "tools/si/sub_table.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/** What happened on the way from packets to tables. */
struct DemuxStatistics {
  uint64_t truncatedSections = 0;  ///< their end never came
  uint64_t crcErrors = 0;          ///< sections with a wrong CRC_32
  uint64_t malformedSections = 0;  ///< a right CRC_32, and lengths that do not add up
  uint64_t discontinuities = 0;    ///< times that the continuity counter told of lost packets
};

/** A sub-table of which not all sections had come. */
struct IncompleteTable {
  int tableId;      ///< table_id
  int extension;    ///< table_id_extension
  size_t sections;  ///< how many had
};

/**
 * Takes the tables of the actual transport stream out of its packets: PAT, CAT, the PMTs that the
 * PAT names, NIT, SDT, BAT, EIT present/following and schedule, TOT (PIDs: EN 300 468, 5.1.3).
 *
 * Every table is handed on when it is complete, each new version once, in stream order; every TOT
 * is new. Tables that are not yet applicable (current_next_indicator 0) are passed over. A PMT
 * never comes before the PAT that names it. When a PAT names another transport stream everything is
 * new again.
 *
 * Any packets are legal. Not safe for use from two threads.
 */
class TableDemux {
 public:
  /** May throw; push then passes the exception on. */
  using Consumer = std::function<void(const SiTable& table)>;

  /** `consumer` is given every table. */
  explicit TableDemux(Consumer consumer);

  /** The next packet of the stream. */
  void push(const TsPacket& packet);

  /** Of how many sections the table is that the consumer has just been given. */
  [[nodiscard]] size_t sectionsOfTable() const { return sectionsOfTable_; }

  /** Of all PIDs, up to now. */
  [[nodiscard]] DemuxStatistics statistics() const;
  /** The same by PID, of all PIDs that have been looked at. */
  [[nodiscard]] std::map<int, DemuxStatistics> statisticsByPid() const;
  /** By PID, then table_id, then extension. */
  [[nodiscard]] std::vector<IncompleteTable> incompleteTables() const;

 private:
  using Key = std::tuple<int, int, int>;  // PID, table_id, table_id_extension

  void take(int pid, Section section);
  /** Whether the table belongs on this PID. */
  [[nodiscard]] bool belongs(int pid, const Section& section) const;
  void follow(const PAT& pat);
  void dropUnreferencedPmts();

  Consumer consumer_;
  std::vector<std::unique_ptr<SectionGatherer>> gatherers_;  // by PID; null where nothing is wanted
  std::map<Key, SubTable> subTables_;
  std::set<std::pair<int, int>> pmts_;  // PID and programme number, of the current PAT
  std::optional<int> transportStreamId_;
  size_t sectionsOfTable_ = 0;
  std::map<int, DemuxStatistics> closed_;  // by PID, of gatherers that are gone
};

}  // namespace tevra::tools
