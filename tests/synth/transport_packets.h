#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/records.h"
#include "tests/support/crc32.h"

/**
 * The receiving end of what the synthesis sends: written from ISO/IEC 13818-1 for the tests alone,
 * or libdvbpsi's decoders. Everything here raises std::runtime_error with a reason when the packets
 * are not as they should be.
 */
namespace tevra::test {

using Packets = std::vector<std::string>;

/**
 * The sections that `packets` carry on `pid`, CRC_32 included. Packets must be of 188 bytes,
 * payload only, neither scrambled nor in error, their continuity counters running from 0; every
 * section begins in a packet of its own with pointer_field 0, has a right CRC_32, and is followed
 * by nothing but stuffing.
 */
[[nodiscard]] std::vector<std::string> sectionsOf(const Packets& packets, int pid);

/** A byte of a section as a number. */
[[nodiscard]] int byteAt(const std::string& bytes, size_t index);

/** version_number and current_next_indicator of a section. */
[[nodiscard]] int versionOf(const std::string& section);
[[nodiscard]] bool currentNextOf(const std::string& section);

/** The one table that libdvbpsi finds in `packets`. */
[[nodiscard]] PAT decodePat(const Packets& packets);
[[nodiscard]] SDT decodeSdt(const Packets& packets);
[[nodiscard]] PMT decodePmt(const Packets& packets, int32_t programNumber);

}  // namespace tevra::test
