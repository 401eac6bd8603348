#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "tools/si/section.h"
#include "tools/stream/ts_packet.h"

namespace tevra::tools {

/**
 * Puts the sections of one PID together from its packets, with libdvbpsi.
 *
 * libdvbpsi checks the continuity counter and the CRC_32. Packets that it would read beyond (bad
 * adaptation field or pointer_field), that are scrambled, flagged as damaged or empty never reach
 * it.
 */
class SectionGatherer {
 public:
  /** Raises std::bad_alloc when libdvbpsi cannot allocate. */
  SectionGatherer();
  ~SectionGatherer();
  SectionGatherer(const SectionGatherer&) = delete;
  SectionGatherer& operator=(const SectionGatherer&) = delete;

  /** The sections that end in `packet`, in order. */
  [[nodiscard]] std::vector<Section> push(const TsPacket& packet);

  /** Sections whose end never came. */
  [[nodiscard]] uint64_t truncatedSections() const;
  /** Sections with a wrong CRC_32. */
  [[nodiscard]] uint64_t crcErrors() const;
  /** Sections of a handled table with a right CRC_32 whose lengths do not add up. */
  [[nodiscard]] uint64_t malformedSections() const;
  /** How often the continuity counter told of lost packets. */
  [[nodiscard]] uint64_t discontinuities() const;

 private:
  class Decoder;
  std::unique_ptr<Decoder> decoder_;
};

}  // namespace tevra::tools
