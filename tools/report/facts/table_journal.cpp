#include "tools/report/facts/table_journal.h"

#include <algorithm>
#include <variant>

#include "tools/si/section.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools::report {
namespace {

// The order of the account.
enum Kind : size_t { kPat, kCat, kPmt, kSdt, kNit, kBat, kTot, kEitPresent, kEitSchedule };

std::string numbered(const char* noun, int number) {
  return std::string(noun) + " " + std::to_string(number);
}

}  // namespace

void TableJournal::add(const SiTable& table, size_t sections) {
  TableFact fact;
  fact.table = table;
  fact.sections = sections;
  std::visit([&](const auto& record) { take(record, fact); }, table);
}

void TableJournal::note(size_t kind, int id, const TableFact& fact) {
  TableFact& known = facts_[{kind, id, fact.tableId}];
  const size_t times = known.times + 1;
  known = fact;
  known.times = times;
}

void TableJournal::take(const PAT& pat, TableFact fact) {
  if (pat_ && pat_->transportStreamId != pat.transportStreamId) {
    pmts_.clear();  // another multiplex begins
    eits_.clear();
  }
  pat_ = pat;
  fact.kind = "PAT";
  fact.tableId = kTablePat;
  fact.of = numbered("transport stream", pat.transportStreamId);
  fact.version = pat.version;
  fact.pid = kPatPid;
  note(kPat, pat.transportStreamId, fact);
}

void TableJournal::take(const CAT& cat, TableFact fact) {
  cat_ = cat;
  fact.kind = "CAT";
  fact.tableId = kTableCat;
  fact.version = cat.version;
  fact.pid = kCatPid;
  note(kCat, 0, fact);
}

void TableJournal::take(const PMT& pmt, TableFact fact) {
  pmts_[pmt.programNumber] = pmt;
  fact.kind = "PMT";
  fact.tableId = kTablePmt;
  fact.of = numbered("service", pmt.programNumber);
  fact.version = pmt.version;
  for (const PATProgram& program : pat_ ? pat_->programs : std::vector<PATProgram>{}) {
    if (program.programNumber == pmt.programNumber) {
      fact.pid = program.pid;
    }
  }
  note(kPmt, pmt.programNumber, fact);
}

void TableJournal::take(const SDT& sdt, TableFact fact) {
  fact.kind = "SDT";
  fact.tableId = kTableSdtActual;
  fact.of = numbered("transport stream", sdt.transportStreamId);
  fact.version = sdt.version;
  fact.pid = kSdtPid;
  note(kSdt, sdt.transportStreamId, fact);
}

void TableJournal::take(const NIT& nit, TableFact fact) {
  nit_ = nit;
  fact.kind = "NIT";
  fact.tableId = kTableNitActual;
  fact.of = numbered("network", nit.networkId);
  fact.version = nit.version;
  fact.pid = kNitPid;
  note(kNit, nit.networkId, fact);
}

void TableJournal::take(const BAT& bat, TableFact fact) {
  fact.kind = "BAT";
  fact.tableId = kTableBat;
  fact.of = numbered("bouquet", bat.bouquetId);
  fact.version = bat.version;
  fact.pid = kSdtPid;
  note(kBat, bat.bouquetId, fact);
}

void TableJournal::take(const TOT& /*tot*/, TableFact fact) {
  fact.kind = "TOT";
  fact.tableId = kTableTot;
  fact.pid = kTotPid;
  note(kTot, 0, fact);
}

void TableJournal::take(const EIT& eit, TableFact fact) {
  const bool isPresent = eit.tableId == kTableEitPresentFollowing;
  eits_[{eit.serviceId, eit.tableId}] = eit;
  fact.kind = isPresent ? "EIT present/following" : "EIT schedule";
  fact.tableId = eit.tableId;
  fact.of = numbered("service", eit.serviceId);
  fact.version = eit.version;
  fact.pid = kEitPid;
  note(isPresent ? kEitPresent : kEitSchedule, eit.serviceId, fact);
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
