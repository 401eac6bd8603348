#include "tools/report/facts/section_tally.h"

namespace tevra::tools::report {
namespace {

/** Whether table_id_extension means nothing: reserved, or not there. */
bool hasNoExtension(int tableId) {
  return tableId == kTableCat || tableId == kTableTot;
}

}  // namespace

void SectionTally::add(int pid, const SectionSeen& section) {
  SectionCount& count = counts_[pid][section.tableId];
  count.wrongCrc += section.state == SectionSeen::State::kWrongCrc ? 1 : 0;
  count.malformed += section.state == SectionSeen::State::kMalformed ? 1 : 0;
  if (section.state != SectionSeen::State::kSound) {
    return;
  }
  ++count.sound;
  if (section.number == 0 && Section::isHandled(section.tableId)) {
    const int extension = hasNoExtension(section.tableId) ? 0 : section.extension;
    ++firstSections_[{section.tableId, extension}];
  }
}

const std::map<int, SectionCount>& SectionTally::on(int pid) const {
  static const std::map<int, SectionCount> kNone;
  const auto entry = counts_.find(pid);
  return entry == counts_.end() ? kNone : entry->second;
}

uint64_t SectionTally::sections(int pid) const {
  uint64_t sum = 0;
  for (const auto& [tableId, count] : on(pid)) {
    sum += count.sound + count.wrongCrc + count.malformed;
  }
  return sum;
}

uint64_t SectionTally::arrivals(int tableId, int extension) const {
  const auto entry = firstSections_.find({tableId, extension});
  return entry == firstSections_.end() ? 0 : entry->second;
}

}  // namespace tevra::tools::report
