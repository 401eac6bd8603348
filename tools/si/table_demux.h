#pragma once

#include <functional>
#include <map>
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

/** By PID. */
using FaultsByPid = std::map<int, SectionFaults>;
/** Of all PIDs. */
[[nodiscard]] SectionFaults sumOf(const FaultsByPid& faults);

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
  /** The table came in so many sections. May throw; push then passes the exception on. */
  using Consumer = std::function<void(const SiTable& table, size_t sections)>;

  /** Told of every section on a PID that is looked at, whatever its table, before any table. */
  using OnSection = std::function<void(int pid, const SectionSeen& section)>;

  /** `consumer` is given every table. */
  explicit TableDemux(Consumer consumer, OnSection onSection = nullptr);
  TableDemux(const TableDemux&) = delete;
  TableDemux& operator=(const TableDemux&) = delete;

  /** The next packet of the stream. */
  void push(const TsPacket& packet);

  /** The stream begins again: what comes next is no gap, and what has come is still known. */
  void restart();

  /** Up to now, of all PIDs that have been looked at. */
  [[nodiscard]] const FaultsByPid& faults() const { return faults_; }
  /** By PID, then table_id, then extension. */
  [[nodiscard]] std::vector<IncompleteTable> incompleteTables() const;

 private:
  using Key = std::tuple<int, int, int>;  // PID, table_id, table_id_extension

  void lookAt(int pid);
  void take(int pid, Section section);
  /** Whether the table belongs on this PID. */
  [[nodiscard]] bool belongs(int pid, const Section& section) const;
  /** Whether the current PAT names the PID. */
  [[nodiscard]] bool isPmtPid(int pid) const;
  void follow(const PAT& pat);
  void dropUnreferencedPmts();

  Consumer consumer_;
  OnSection onSection_;
  FaultsByPid faults_;
  std::map<int, SectionGatherer> gatherers_;  // by PID; they count into faults_
  std::map<Key, SubTable> subTables_;
  std::set<std::pair<int, int>> pmts_;  // PID and programme number, of the current PAT
  std::optional<int> transportStreamId_;
};

}  // namespace tevra::tools
