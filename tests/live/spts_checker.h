#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "tests/live/stamp.h"
#include "tests/system/psi_tables.h"
#include "tests/tools/support/continuity_check.h"
#include "tests/tools/support/faults.h"
#include "tests/tools/support/table_intervals.h"
#include "tools/stream/ts_packet.h"

namespace tevra::test {

using tools::test::ContinuityCheck;
using tools::test::Faults;
using tools::test::TableIntervals;

/**
 * Takes the datagrams of a single-programme stream made of a multiplex of stamped packets, and
 * looks for all that can be wrong with it: packets that are damaged, lost, out of order or not
 * announced, tables that come late, are damaged or change without the next version.
 */
class SptsChecker {
 public:
  /** The next datagram; `now` by the clock of the stamps. */
  void take(const uint8_t* datagram, size_t size, int64_t now);
  /** Datagrams were lost on the way to the checker: what is missing now is nobody's fault. */
  void forget();
  /** Nothing more comes. */
  void finish() { intervals_.finish(); }

  [[nodiscard]] const Faults& faults() const { return faults_; }
  [[nodiscard]] const TableIntervals& intervals() const { return intervals_; }
  [[nodiscard]] uint64_t streamPackets() const { return streamPackets_; }
  [[nodiscard]] uint64_t tablePackets() const { return packets_ - streamPackets_; }
  /** Datagrams with fewer than seven packets. */
  [[nodiscard]] uint64_t shortDatagrams() const { return shortDatagrams_; }
  /** Number of the last packet of each stream in it, and one more. */
  [[nodiscard]] const std::map<StreamId, uint64_t>& received() const { return received_; }
  /** Every PMT that was not the one before. */
  [[nodiscard]] const std::vector<ParsedPmt>& pmts() const { return pmts_; }
  /** Number in the multiplex of the first stream packet of each transport stream. */
  [[nodiscard]] const std::map<uint32_t, uint64_t>& beginnings() const { return beginnings_; }
  /** Nanoseconds that the slowest packet took from its stamp to here. */
  [[nodiscard]] int64_t longestWay() const { return longestWay_; }
  /** When the first packet came that belongs to a stream with PCRs. */
  [[nodiscard]] int64_t firstPicture() const { return firstPicture_; }

 private:
  void takePacket(const tools::TsPacket& packet, int64_t now);
  void takeTable(const tools::TsPacket& packet);
  [[nodiscard]] std::string sectionIn(const tools::TsPacket& packet);
  [[nodiscard]] bool isNewVersion(const std::string& section);
  void takePat(const std::string& section);
  void takeStream(const tools::TsPacket& packet, int64_t now);
  void requireAnnounced(const tools::TsPacket& packet);
  void follow(const Stamp& stamp);

  Faults faults_;
  ContinuityCheck continuity_{faults_};
  TableIntervals intervals_{faults_};
  int pmtPid_ = -1;
  std::map<char, std::string> sections_;  // the last by table id
  std::vector<ParsedPmt> pmts_;
  std::map<StreamId, uint64_t> received_;
  std::map<uint32_t, uint64_t> beginnings_;
  // Transport stream, and the packet from which on none of it has been lost.
  std::optional<std::pair<uint32_t, uint64_t>> sureFrom_;
  uint64_t packets_ = 0;
  uint64_t streamPackets_ = 0;
  uint64_t shortDatagrams_ = 0;
  int64_t longestWay_ = 0;
  int64_t firstPicture_ = 0;
};

}  // namespace tevra::test
