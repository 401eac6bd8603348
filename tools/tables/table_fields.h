#pragma once

#include <string>

#include "tools/fields/fields.h"
#include "tools/si/si_table.h"

namespace tevra::tools {

/** A table: its short name, the fields of its header and, behind them, its loops. */
struct TableFields {
  std::string name;  ///< "PAT", "EIT"
  Fields fields;     ///< in the order of the section
};

/** Any table with everything in it decoded; the order and the names are the standards'. */
[[nodiscard]] TableFields tableFields(const SiTable& table);

/** "PAT", "EIT": the same name without decoding the table. */
[[nodiscard]] std::string tableName(const SiTable& table);

/**
 * The service that a table is about: a PMT's programme number or an EIT's service_id; -1 for a
 * table that is about none in particular.
 */
[[nodiscard]] int serviceOf(const SiTable& table);

}  // namespace tevra::tools
