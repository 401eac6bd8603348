#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

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

/** A schedule of the actual transport stream. */
[[nodiscard]] inline bool isEitSchedule(int tableId) {
  return tableId >= kTableEitScheduleFirst && tableId <= kTableEitScheduleLast;
}
/** Present/following or schedule, of the actual transport stream. */
[[nodiscard]] inline bool isEit(int tableId) {
  return tableId == kTableEitPresentFollowing || isEitSchedule(tableId);
}

/** A 16-bit big-endian field. */
[[nodiscard]] inline int read16(const uint8_t* bytes) {
  return (bytes[0] << 8) | bytes[1];
}
/** The 12-bit length at the end of a 16-bit field, as all loops have it. */
[[nodiscard]] inline size_t read12(const uint8_t* bytes) {
  return static_cast<size_t>(read16(bytes) & 0x0FFF);
}

/**
 * A PSI or SI section with a CRC_32 (ISO/IEC 13818-1, 2.4.4.10; EN 300 468, 5.1.1): one of the
 * tables above and nothing else. Loops inside the payload add up: whatever decodes it by the
 * table's syntax stays within it.
 */
class Section {
 public:
  /**
   * Takes a section whose CRC_32 is known to be right. Nothing when it is of another table, longer
   * than its table allows, or its loops do not add up.
   */
  [[nodiscard]] static std::optional<Section> parse(const uint8_t* bytes, size_t size);
  /** Whether `tableId` is one of the tables above. */
  [[nodiscard]] static bool isHandled(int tableId);

  [[nodiscard]] int tableId() const { return bytes_[0]; }  ///< table_id

  ///@{
  /**
   * table_id_extension, version_number, current_next_indicator, section_number and
   * last_section_number; 0, 0, true, 0 and 0 for a TOT, whose header is short.
   */
  [[nodiscard]] int extension() const { return isLong() ? read16(&bytes_[3]) : 0; }
  [[nodiscard]] int version() const { return isLong() ? (bytes_[5] >> 1) & 0x1F : 0; }
  [[nodiscard]] bool isCurrent() const { return !isLong() || (bytes_[5] & 0x01) != 0; }
  [[nodiscard]] int number() const { return isLong() ? bytes_[6] : 0; }
  [[nodiscard]] int lastNumber() const { return isLong() ? bytes_[7] : 0; }
  ///@}

  ///@{
  /** What lies between header and CRC_32. */
  [[nodiscard]] const uint8_t* payload() const { return bytes_.data() + headerSize(); }
  [[nodiscard]] size_t payloadSize() const { return bytes_.size() - headerSize() - kCrcSize; }
  [[nodiscard]] const uint8_t* payloadEnd() const { return payload() + payloadSize(); }
  ///@}

  /** All of it, header and CRC_32 included. */
  [[nodiscard]] const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  static constexpr size_t kCrcSize = 4;

  Section(const uint8_t* bytes, size_t size) : bytes_(bytes, bytes + size) {}
  [[nodiscard]] bool isLong() const { return (bytes_[1] & 0x80) != 0; }
  [[nodiscard]] size_t headerSize() const { return isLong() ? 8 : 3; }

  std::vector<uint8_t> bytes_;
};

}  // namespace tevra::tools
