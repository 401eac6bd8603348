#pragma once

#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tools/report/facts/report_data.h"
#include "tools/si/table_identity.h"

namespace tevra::tools::report {

/** The last of every table of a stream, and an account of them for people. */
class TableJournal {
 public:
  /** The table came in so many sections. */
  void add(const SiTable& table, size_t sections);

  ///@{
  /** The last that came; nothing where none came. */
  [[nodiscard]] const std::optional<PAT>& pat() const { return pat_; }
  [[nodiscard]] const std::optional<CAT>& cat() const { return cat_; }
  [[nodiscard]] const std::optional<NIT>& nit() const { return nit_; }
  ///@}
  /** Null where none came. */
  [[nodiscard]] const PMT* pmt(int programNumber) const;
  /** Of present/following and schedule, by table id. */
  [[nodiscard]] std::vector<EIT> eits(int serviceId) const;

  /** By kind, then by id. */
  [[nodiscard]] std::vector<TableFact> facts() const;

 private:
  void keep(const SiTable& table);
  [[nodiscard]] int pidOf(const SiTable& table) const;

  std::optional<PAT> pat_;
  std::optional<CAT> cat_;
  std::optional<NIT> nit_;
  std::map<int, PMT> pmts_;                  // by programme number
  std::map<std::pair<int, int>, EIT> eits_;  // by service and table_id
  std::map<TablePlace, TableFact> facts_;
};

}  // namespace tevra::tools::report
