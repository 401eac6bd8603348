#include "tools/si/table_demux.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "tools/si/table_decoder.h"

namespace tevra::tools {
namespace {

constexpr std::array<int, 6> kFixedPids = {kPatPid, kCatPid, kNitPid, kSdtPid, kEitPid, kTotPid};

bool isFixed(int pid) {
  return std::find(kFixedPids.begin(), kFixedPids.end(), pid) != kFixedPids.end();
}

/**
 * Whether there is only one such table, so that another table_id_extension means another version.
 */
bool isSingle(int tableId) {
  return tableId == kTablePat || tableId == kTableCat || tableId == kTableSdtActual ||
         tableId == kTableNitActual;
}

void add(DemuxStatistics& sum, const SectionGatherer& gatherer) {
  sum.truncatedSections += gatherer.truncatedSections();
  sum.crcErrors += gatherer.crcErrors();
  sum.malformedSections += gatherer.malformedSections();
  sum.discontinuities += gatherer.discontinuities();
}

void add(DemuxStatistics& sum, const DemuxStatistics& more) {
  sum.truncatedSections += more.truncatedSections;
  sum.crcErrors += more.crcErrors;
  sum.malformedSections += more.malformedSections;
  sum.discontinuities += more.discontinuities;
}

}  // namespace

TableDemux::TableDemux(Consumer consumer) : consumer_(std::move(consumer)), gatherers_(kPidCount) {
  for (const int pid : kFixedPids) {
    gatherers_[static_cast<size_t>(pid)] = std::make_unique<SectionGatherer>();
  }
}

void TableDemux::push(const TsPacket& packet) {
  const int pid = packet.pid();
  SectionGatherer* gatherer = gatherers_[static_cast<size_t>(pid)].get();
  if (gatherer == nullptr) {
    return;
  }
  for (Section& section : gatherer->push(packet)) {
    if (section.isCurrent && belongs(pid, section)) {
      take(pid, std::move(section));
    }
  }
}

bool TableDemux::belongs(int pid, const Section& section) const {
  switch (section.tableId) {
    case kTablePat:
      return pid == kPatPid;
    case kTableCat:
      return pid == kCatPid;
    case kTablePmt:
      return pmts_.count({pid, section.extension}) != 0;
    case kTableNitActual:
      return pid == kNitPid;
    case kTableSdtActual:
    case kTableBat:
      return pid == kSdtPid;
    case kTableTot:
      return pid == kTotPid;
    default:
      return pid == kEitPid;
  }
}

void TableDemux::take(int pid, Section section) {
  const int tableId = section.tableId;
  std::vector<Section> complete;
  if (tableId == kTableTot) {
    complete.push_back(std::move(section));
  } else {
    const int extension = isSingle(tableId) ? 0 : section.extension;
    complete = subTables_[{pid, tableId, extension}].add(std::move(section));
  }
  if (complete.empty()) {
    return;
  }
  sectionsOfTable_ = complete.size();
  const SiTable table = tableOf(std::move(complete));
  if (const PAT* pat = std::get_if<PAT>(&table)) {
    follow(*pat);
  }
  consumer_(table);
}

void TableDemux::follow(const PAT& pat) {
  if (transportStreamId_ && *transportStreamId_ != pat.transportStreamId) {
    const Key patKey = {kPatPid, kTablePat, 0};
    SubTable patState = std::move(subTables_[patKey]);
    subTables_.clear();
    subTables_[patKey] = std::move(patState);
  }
  transportStreamId_ = pat.transportStreamId;
  pmts_.clear();
  for (const PATProgram& program : pat.programs) {
    if (program.programNumber != 0) {  // 0 is the NIT's PID
      pmts_.insert({program.pid, program.programNumber});
    }
  }
  dropUnreferencedPmts();
  for (const auto& pmt : pmts_) {
    auto& gatherer = gatherers_[static_cast<size_t>(pmt.first)];
    if (gatherer == nullptr) {
      gatherer = std::make_unique<SectionGatherer>();
    }
  }
}

void TableDemux::dropUnreferencedPmts() {
  for (auto entry = subTables_.begin(); entry != subTables_.end();) {
    const auto [pid, tableId, extension] = entry->first;
    const bool stays = tableId != kTablePmt || pmts_.count({pid, extension}) != 0;
    entry = stays ? std::next(entry) : subTables_.erase(entry);
  }
  for (int pid = 0; pid < kPidCount; ++pid) {
    const auto first = pmts_.lower_bound({pid, 0});
    const bool named = first != pmts_.end() && first->first == pid;
    auto& gatherer = gatherers_[static_cast<size_t>(pid)];
    if (gatherer != nullptr && !named && !isFixed(pid)) {
      add(closed_[pid], *gatherer);
      gatherer.reset();
    }
  }
}

DemuxStatistics TableDemux::statistics() const {
  DemuxStatistics sum;
  for (const auto& [pid, statistics] : statisticsByPid()) {
    add(sum, statistics);
  }
  return sum;
}

std::map<int, DemuxStatistics> TableDemux::statisticsByPid() const {
  std::map<int, DemuxStatistics> byPid = closed_;
  for (int pid = 0; pid < kPidCount; ++pid) {
    if (const auto& gatherer = gatherers_[static_cast<size_t>(pid)]) {
      add(byPid[pid], *gatherer);
    }
  }
  return byPid;
}

std::vector<IncompleteTable> TableDemux::incompleteTables() const {
  std::vector<IncompleteTable> incomplete;
  for (const auto& [key, subTable] : subTables_) {
    if (subTable.pendingSections() != 0) {
      incomplete.push_back({std::get<1>(key), std::get<2>(key), subTable.pendingSections()});
    }
  }
  return incomplete;
}

}  // namespace tevra::tools
