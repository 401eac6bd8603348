#pragma once

#include <cstddef>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "tools/si/section.h"

namespace tevra::tools {

/**
 * Collects the sections of one sub-table (EN 300 468, 5.1.1) and tells when a version of it is
 * complete.
 *
 * Complete means every section from 0 to last_section_number; of an EIT, every section of every
 * segment of eight up to the segment's segment_last_section_number (5.2.4), so that a schedule's
 * unused section numbers are not waited for. A version is complete once: its repetitions are
 * ignored until another version has been. The table_id_extension counts as part of the version, for
 * the tables of which there is only one at a time.
 */
class SubTable {
 public:
  /**
   * Takes a section of this sub-table. All sections in order when it completes a new version, else
   * none.
   */
  [[nodiscard]] std::vector<Section> add(Section section);

  /** Sections of a version that is not complete yet. */
  [[nodiscard]] size_t pendingSections() const { return sections_.size(); }

 private:
  using Version = std::pair<int, int>;  // table_id_extension and version_number

  [[nodiscard]] bool isComplete(int tableId) const;
  [[nodiscard]] bool hasAll(int first, int last) const;
  [[nodiscard]] bool hasAllSegments() const;
  void startOver();

  std::map<int, Section> sections_;
  std::optional<Version> collecting_;
  int lastNumber_ = 0;  // of the version that is being collected
  std::optional<Version> delivered_;
};

}  // namespace tevra::tools
