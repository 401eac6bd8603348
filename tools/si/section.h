#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "tools/si/si_table.h"

namespace tevra::tools {

///@{
/** table_id of a table that is handled (ISO/IEC 13818-1, table 2-31; EN 300 468, table 2). */
inline constexpr int kTablePat = 0x00;
inline constexpr int kTableCat = 0x01;
inline constexpr int kTablePmt = 0x02;
inline constexpr int kTableNitActual = 0x40;
inline constexpr int kTableSdtActual = 0x42;
inline constexpr int kTableBat = 0x4A;
inline constexpr int kTableEitPresentFollowing = 0x4E;
inline constexpr int kTableEitScheduleFirst = 0x50;
inline constexpr int kTableEitScheduleLast = 0x5F;
inline constexpr int kTableTot = 0x73;
///@}
/** table_id of a TDT, which has no CRC_32 (EN 300 468, 5.2.5) and is not handled as a section. */
inline constexpr int kTableTdt = 0x70;

inline constexpr size_t kSectionStart = 3;       ///< up to section_length, which counts the rest
inline constexpr size_t kLongestSection = 4096;  ///< of any table: an EIT's (EN 300 468, 5.2.4)

/** A schedule of the actual transport stream. */
[[nodiscard]] inline bool isEitSchedule(int tableId) {
  return tableId >= kTableEitScheduleFirst && tableId <= kTableEitScheduleLast;
}
/** Present/following or schedule, of the actual transport stream. */
[[nodiscard]] inline bool isEit(int tableId) {
  return tableId == kTableEitPresentFollowing || isEitSchedule(tableId);
}

/**
 * A PSI or SI section with a CRC_32 (ISO/IEC 13818-1, 2.4.4.10; EN 300 468, 5.1.1): one of the
 * tables above and nothing else.
 */
struct Section {
  int tableId = 0;  ///< table_id
  ///@{
  /**
   * table_id_extension, version_number, current_next_indicator, section_number and
   * last_section_number; these for a TOT, whose header is short.
   */
  int extension = 0;
  int version = 0;
  bool isCurrent = true;
  int number = 0;
  int lastNumber = 0;
  ///@}
  SiTable content;  ///< what it holds, as a table of this section alone

  /**
   * Takes a section whose CRC_32 is known to be right. Nothing when it is of another table, longer
   * than its table allows, or its lengths do not add up.
   */
  [[nodiscard]] static std::optional<Section> parse(const uint8_t* bytes, size_t size);
  /** Whether `tableId` is one of the tables above. */
  [[nodiscard]] static bool isHandled(int tableId);
};

}  // namespace tevra::tools
