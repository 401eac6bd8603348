#pragma once

#include <optional>
#include <string>
#include <tuple>
#include <vector>

#include "tools/si/si_table.h"

namespace tevra::tools {

/** The tables, in the order in which a list has them. */
enum class TableKind {
  kPat,
  kCat,
  kPmt,
  kSdt,
  kNit,
  kBat,
  kTot,
  kEitPresentFollowing,
  kEitSchedule,
};

/** What a kind is called. */
struct TableKindNames {
  const char* table;    ///< "EIT"
  const char* whole;    ///< "EIT present/following"
  const char* brief;    ///< "EIT p/f"
  const char* call;     ///< "EITPresentFollowing", as the calls have it that carry one
  const char* subject;  ///< "service": what it is about; empty for CAT and TOT
};

/** Of one kind. */
[[nodiscard]] const TableKindNames& namesOf(TableKind kind);

/** Orders a list of tables: by kind, then by the identifier of the subject, then by table_id. */
using TablePlace = std::tuple<TableKind, int, int>;

/** An identifier in a table's header. */
struct TableId {
  const char* name;  ///< "serviceId"
  int value;         ///< as it stands in the stream
};

/**
 * Which table it is. What tells a table from the others of its kind are its table_id and the
 * identifiers of programme, service, transport stream, network and bouquet in its header: neither
 * its version nor what it says of something else, as PCR_PID and last_table_id do.
 */
struct TableIdentity {
  TableKind kind;            ///< of an EIT by its table_id
  int tableId;               ///< table_id
  std::vector<TableId> ids;  ///< the others in the header's order; the first is the subject's

  /** What it is about: "service 101"; empty for CAT and TOT. */
  [[nodiscard]] std::string subject() const;
  /** Two tables with one place are versions of the same one. */
  [[nodiscard]] TablePlace place() const;
};

/** Of any table. */
[[nodiscard]] TableIdentity identityOf(const SiTable& table);

/** Nothing for a TOT, which has none. */
[[nodiscard]] std::optional<int> versionOf(const SiTable& table);

}  // namespace tevra::tools
