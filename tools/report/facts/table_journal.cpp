#include "tools/report/facts/table_journal.h"

#include <array>
#include <variant>

#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

/** By kind; a PMT's is the PAT's to say. */
constexpr std::array<int, 9> kPids = {kPatPid, kCatPid, 0,       kSdtPid, kNitPid,
                                      kSdtPid, kTotPid, kEitPid, kEitPid};

}  // namespace

void TableJournal::add(const SiTable& table, size_t sections) {
  keep(table);
  TableFact& known = facts_[identityOf(table).place()];
  known = {table, sections, pidOf(table), known.times + 1};
}

void TableJournal::keep(const SiTable& table) {
  if (const PAT* pat = std::get_if<PAT>(&table)) {
    if (pat_ && pat_->transportStreamId != pat->transportStreamId) {
      pmts_.clear();  // another multiplex begins
      eits_.clear();
    }
    pat_ = *pat;
  } else if (const CAT* cat = std::get_if<CAT>(&table)) {
    cat_ = *cat;
  } else if (const PMT* pmt = std::get_if<PMT>(&table)) {
    pmts_[pmt->programNumber] = *pmt;
  } else if (const NIT* nit = std::get_if<NIT>(&table)) {
    nit_ = *nit;
  } else if (const EIT* eit = std::get_if<EIT>(&table)) {
    eits_[{eit->serviceId, eit->tableId}] = *eit;
  }
}

int TableJournal::pidOf(const SiTable& table) const {
  int pid = kPids.at(static_cast<size_t>(identityOf(table).kind));
  const PMT* pmt = std::get_if<PMT>(&table);
  if (pmt != nullptr && pat_) {
    for (const PATProgram& program : pat_->programs) {
      pid = program.programNumber == pmt->programNumber ? program.pid : pid;
    }
  }
  return pid;
}

const PMT* TableJournal::pmt(int programNumber) const {
  const auto entry = pmts_.find(programNumber);
  return entry == pmts_.end() ? nullptr : &entry->second;
}

std::vector<EIT> TableJournal::eits(int serviceId) const {
  std::vector<EIT> result;
  for (auto entry = eits_.lower_bound({serviceId, 0});
       entry != eits_.end() && entry->first.first == serviceId; ++entry) {
    result.push_back(entry->second);
  }
  return result;
}

std::vector<TableFact> TableJournal::facts() const {
  std::vector<TableFact> result;
  for (const auto& entry : facts_) {
    result.push_back(entry.second);
  }
  return result;
}

}  // namespace tevra::tools::report
