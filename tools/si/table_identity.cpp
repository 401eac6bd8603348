#include "tools/si/table_identity.h"

#include <array>

#include "tools/si/section.h"

namespace tevra::tools {
namespace {

constexpr int kTableSdtOther = 0x46;

constexpr TableKindNames alike(const char* name, const char* subject) {
  return {name, name, name, name, subject};
}

/** By kind. */
constexpr std::array<TableKindNames, 9> kNames = {{
    alike("PAT", "transport stream"),
    alike("CAT", ""),
    alike("PMT", "service"),
    alike("SDT", "transport stream"),
    alike("NIT", "network"),
    alike("BAT", "bouquet"),
    alike("TOT", ""),
    {"EIT", "EIT present/following", "EIT p/f", "EITPresentFollowing", "service"},
    {"EIT", "EIT schedule", "EIT schedule", "EITSchedule", "service"},
}};

struct IdentityOf {
  TableIdentity operator()(const PAT& pat) const {
    return {TableKind::kPat, kTablePat, {{"transportStreamId", pat.transportStreamId}}};
  }
  TableIdentity operator()(const CAT& /*cat*/) const { return {TableKind::kCat, kTableCat, {}}; }
  TableIdentity operator()(const PMT& pmt) const {
    return {TableKind::kPmt, kTablePmt, {{"programNumber", pmt.programNumber}}};
  }
  TableIdentity operator()(const SDT& sdt) const {
    return {TableKind::kSdt,
            sdt.tableId,
            {{"transportStreamId", sdt.transportStreamId},
             {"originalNetworkId", sdt.originalNetworkId}}};
  }
  TableIdentity operator()(const NIT& nit) const {
    return {TableKind::kNit, nit.tableId, {{"networkId", nit.networkId}}};
  }
  TableIdentity operator()(const BAT& bat) const {
    return {TableKind::kBat, bat.tableId, {{"bouquetId", bat.bouquetId}}};
  }
  TableIdentity operator()(const TOT& /*tot*/) const { return {TableKind::kTot, kTableTot, {}}; }
  TableIdentity operator()(const EIT& eit) const {
    const bool isSchedule = isEitSchedule(eit.tableId);
    return {isSchedule ? TableKind::kEitSchedule : TableKind::kEitPresentFollowing,
            eit.tableId,
            {{"serviceId", eit.serviceId},
             {"transportStreamId", eit.transportStreamId},
             {"originalNetworkId", eit.originalNetworkId}}};
  }
};

}  // namespace

const TableKindNames& namesOf(TableKind kind) {
  return kNames.at(static_cast<size_t>(kind));
}

std::string TableIdentity::subject() const {
  if (ids.empty()) {
    return {};
  }
  const bool isOther = kind == TableKind::kSdt && tableId == kTableSdtOther;
  return std::string(isOther ? "other " : "") + namesOf(kind).subject + " " +
         std::to_string(ids.front().value);
}

TablePlace TableIdentity::place() const {
  return {kind, ids.empty() ? 0 : ids.front().value, tableId};
}

TableIdentity identityOf(const SiTable& table) {
  return std::visit(IdentityOf(), table);
}

std::optional<int> versionOf(const SiTable& table) {
  if (std::holds_alternative<TOT>(table)) {
    return std::nullopt;
  }
  return std::visit([](const auto& record) { return record.version; }, table);
}

}  // namespace tevra::tools
