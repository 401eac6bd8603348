#include "tools/feed/table_feeder.h"

#include <variant>

#include "im_SIControlSrv.h"
#include "tools/si/section.h"
#include "tools/text/dvb_time.h"
#include "tools/text/text_table.h"
#include "tools/text/words.h"

namespace tevra::tools {
namespace {

using thrift::in_module::EITMap;

/** Hands a table to the daemon. */
struct Call {
  thrift::in_module::im_SIControlSrvIf& daemon;
  bool isTaken = true;  // what the daemon answers, where it does

  void operator()(const PAT& pat) { daemon.setPAT(pat); }
  void operator()(const CAT& cat) { daemon.setCAT(cat); }
  void operator()(const PMT& pmt) { daemon.setPMT(pmt); }
  void operator()(const SDT& sdt) { daemon.setSDT(sdt); }
  void operator()(const NIT& nit) { isTaken = daemon.setNIT(nit); }
  void operator()(const BAT& bat) { isTaken = daemon.setBAT(bat); }
  void operator()(const TOT& tot) { daemon.setTOT(tot); }
  void operator()(const EIT& eit) {
    const EITMap eits = {{eit.serviceId, {{eit.tableId, eit}}}};
    if (isEitSchedule(eit.tableId)) {
      daemon.setEITSchedule(eits);
    } else {
      daemon.setEITPresentFollowing(eits);
    }
  }
};

/** What tells one sending of a table from the next. */
std::string momentText(const SiTable& table) {
  const auto version = versionOf(table);
  return version ? "version " + std::to_string(*version)
                 : utcTimeText(std::get<TOT>(table).utcTime);
}

}  // namespace

void TableFeeder::feed(const SiTable& table, size_t sections) {
  Call call{daemon_};
  std::visit(call, table);
  ++sent_;
  refused_ += call.isTaken ? 0 : 1;
  const TableIdentity identity = identityOf(table);
  Sent& account = accounts_[identity.place()];
  account.kind = namesOf(identity.kind).whole;
  account.what = identity.subject();
  if (identity.kind == TableKind::kEitSchedule) {
    account.what += " table " + hex(identity.tableId, 2);
  }
  account.last = momentText(table);
  account.sections = sections;
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

}  // namespace tevra::tools
