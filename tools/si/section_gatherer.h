#pragma once

#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "tools/si/section.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/** What went wrong on the way from packets to sections. */
struct SectionFaults {
  uint64_t truncatedSections = 0;  ///< their end never came
  uint64_t crcErrors = 0;          ///< sections with a wrong CRC_32
  uint64_t malformedSections = 0;  ///< a right CRC_32, and lengths that do not add up
  uint64_t discontinuities = 0;    ///< times that the continuity counter told of lost packets

  /** Adds what went wrong elsewhere. */
  SectionFaults& operator+=(const SectionFaults& more);
};

/** A section of any table whose last byte has come. */
struct SectionSeen {
  /** Whether it can be believed; one without a CRC_32 is sound. */
  enum class State { kSound, kWrongCrc, kMalformed };

  State state;    ///< in the words of SectionFaults
  int tableId;    ///< table_id
  int extension;  ///< table_id_extension; 0 behind a short header
  int number;     ///< section_number; 0 behind a short header
};

/**
 * Puts the sections of one PID together from its packets (ISO/IEC 13818-1, 2.4.4).
 *
 * Not with libdvbpsi's packet decoder: it tells what was wrong in texts alone, does not see that
 * the next section starts before the end of one and then loses both, and reads beyond a packet
 * whose adaptation field or pointer_field leads there.
 */
class SectionGatherer {
 public:
  /** Told of every section whose end comes, before it is handed on. */
  using OnSection = std::function<void(const SectionSeen& section)>;

  /** Counts into `faults`, which must outlive it. */
  explicit SectionGatherer(SectionFaults& faults, OnSection onSection = nullptr)
      : faults_(faults), onSection_(std::move(onSection)) {}

  /**
   * The sections that end in `packet`, in order. Passed over are packets that repeat the last one,
   * and those that are scrambled, flagged as damaged, empty, or say that they go beyond their end.
   */
  [[nodiscard]] std::vector<Section> push(const TsPacket& packet);

  /** What comes next does not go on from the packets before: nothing was lost between them. */
  void restart();

 private:
  void noteCounter(int counter);
  /** Takes what the section in work lacks, as far as it is there; returns where the rest lies. */
  const uint8_t* take(const uint8_t* begin, const uint8_t* end, std::vector<Section>& sections);
  void finish(std::vector<Section>& sections);
  void tell(const std::vector<uint8_t>& bytes, SectionSeen::State state) const;

  SectionFaults& faults_;
  OnSection onSection_;
  int counter_ = -1;            // continuity_counter of the last packet; none yet
  std::vector<uint8_t> bytes_;  // of the section in work
};

}  // namespace tevra::tools
