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

template <class Map, class Goes>
void eraseIf(Map& map, const Goes& goes) {
  for (auto entry = map.begin(); entry != map.end();) {
    entry = goes(entry->first) ? map.erase(entry) : std::next(entry);
  }
}

}  // namespace

SectionFaults sumOf(const FaultsByPid& faults) {
  SectionFaults sum;
  for (const auto& entry : faults) {
    sum += entry.second;
  }
  return sum;
}

TableDemux::TableDemux(Consumer consumer, OnSection onSection)
    : consumer_(std::move(consumer)), onSection_(std::move(onSection)) {
  std::for_each(kFixedPids.begin(), kFixedPids.end(), [this](int pid) { lookAt(pid); });
}

void TableDemux::lookAt(int pid) {
  SectionGatherer::OnSection tell;
  if (onSection_) {
    tell = [this, pid](const SectionSeen& section) { onSection_(pid, section); };
  }
  gatherers_.try_emplace(pid, faults_[pid], std::move(tell));
}

void TableDemux::push(const TsPacket& packet) {
  const int pid = packet.pid();
  const auto gatherer = gatherers_.find(pid);
  if (gatherer == gatherers_.end()) {
    return;
  }
  for (Section& section : gatherer->second.push(packet)) {
    if (section.isCurrent && belongs(pid, section)) {
      take(pid, std::move(section));
    }
  }
}

void TableDemux::restart() {
  for (auto& gatherer : gatherers_) {
    gatherer.second.restart();
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
  const size_t sections = complete.size();
  const SiTable table = tableOf(std::move(complete));
  if (const PAT* pat = std::get_if<PAT>(&table)) {
    follow(*pat);
  }
  consumer_(table, sections);
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
    lookAt(pmt.first);
  }
}

bool TableDemux::isPmtPid(int pid) const {
  const auto first = pmts_.lower_bound({pid, 0});
  return first != pmts_.end() && first->first == pid;
}

void TableDemux::dropUnreferencedPmts() {
  eraseIf(subTables_, [this](const Key& key) {
    const auto [pid, tableId, extension] = key;
    return tableId == kTablePmt && pmts_.count({pid, extension}) == 0;
  });
  eraseIf(gatherers_, [this](int pid) { return !isFixed(pid) && !isPmtPid(pid); });
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
