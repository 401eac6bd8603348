#include "tools/feed/table_feeder.h"

#include <array>
#include <tuple>
#include <variant>

#include "im_SIControlSrv.h"
#include "tools/si/section.h"
#include "tools/text/dvb_time_text.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using thrift::in_module::EITMap;

constexpr std::array<const char*, 9> kKinds = {
    "PAT", "CAT", "PMT", "SDT", "NIT", "BAT", "TOT", "EIT present/following", "EIT schedule"};
enum Kind { kPat, kCat, kPmt, kSdt, kNit, kBat, kTot, kEitPresent, kEitSchedule };

std::string versionText(int version) {
  return "version " + std::to_string(version);
}

std::string numbered(const std::string& noun, int number) {
  return noun + " " + std::to_string(number);
}

}  // namespace

bool TableFeeder::Line::operator<(const Line& other) const {
  return std::tie(kind, id, tableId) < std::tie(other.kind, other.id, other.tableId);
}

void TableFeeder::feed(const SiTable& table, size_t sections) {
  sections_ = sections;
  const bool taken = std::visit([this](const auto& record) { return send(record); }, table);
  ++sent_;
  refused_ += taken ? 0 : 1;
}

void TableFeeder::note(const Line& line, const std::string& what, const std::string& last) {
  Sent& account = accounts_[line];
  account.kind = kKinds.at(static_cast<size_t>(line.kind));
  account.what = what;
  account.last = last;
  account.sections = sections_;
  ++account.count;
}

std::vector<TableFeeder::Sent> TableFeeder::account() const {
  std::vector<Sent> result;
  for (const auto& [line, sent] : accounts_) {
    result.push_back(sent);
  }
  return result;
}

void TableFeeder::print(std::ostream& out) const {
  TextTable table({"table", "of", "last", "sections", "sent"});
  for (const auto& [line, sent] : accounts_) {
    table.addRow({sent.kind, sent.what, sent.last, std::to_string(sent.sections),
                  std::to_string(sent.count)});
  }
  table.print(out, 2);
}

bool TableFeeder::send(const PAT& pat) {
  daemon_.setPAT(pat);
  note({kPat, pat.transportStreamId, 0}, numbered("transport stream", pat.transportStreamId),
       versionText(pat.version));
  return true;
}

bool TableFeeder::send(const CAT& cat) {
  daemon_.setCAT(cat);
  note({kCat, 0, 0}, "", versionText(cat.version));
  return true;
}

bool TableFeeder::send(const PMT& pmt) {
  daemon_.setPMT(pmt);
  note({kPmt, pmt.programNumber, 0}, numbered("service", pmt.programNumber),
       versionText(pmt.version));
  return true;
}

bool TableFeeder::send(const SDT& sdt) {
  daemon_.setSDT(sdt);
  note({kSdt, sdt.transportStreamId, 0}, numbered("transport stream", sdt.transportStreamId),
       versionText(sdt.version));
  return true;
}

bool TableFeeder::send(const NIT& nit) {
  const bool taken = daemon_.setNIT(nit);
  note({kNit, nit.networkId, 0}, numbered("network", nit.networkId), versionText(nit.version));
  return taken;
}

bool TableFeeder::send(const BAT& bat) {
  const bool taken = daemon_.setBAT(bat);
  note({kBat, bat.bouquetId, 0}, numbered("bouquet", bat.bouquetId), versionText(bat.version));
  return taken;
}

bool TableFeeder::send(const TOT& tot) {
  daemon_.setTOT(tot);
  note({kTot, 0, 0}, "", dvbTimeText(tot.utcTime) + " UTC");
  return true;
}

bool TableFeeder::send(const EIT& eit) {
  const EITMap eits = {{eit.serviceId, {{eit.tableId, eit}}}};
  const std::string service = numbered("service", eit.serviceId);
  if (eit.tableId == kTableEitPresentFollowing) {
    daemon_.setEITPresentFollowing(eits);
    note({kEitPresent, eit.serviceId, eit.tableId}, service, versionText(eit.version));
  } else {
    daemon_.setEITSchedule(eits);
    note({kEitSchedule, eit.serviceId, eit.tableId}, service + " table " + hex(eit.tableId, 2),
         versionText(eit.version));
  }
  return true;
}

}  // namespace tevra::tools
