#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tevra::fuzz {

/**
 * A transport stream of the sections that `bytes` describe, one after the other: a byte that
 * chooses the PID, a byte each for table_id and payload size, the payload from
 * table_id_extension on. Lengths and CRC_32 are made right.
 */
[[nodiscard]] std::vector<uint8_t> packetsOfSections(const uint8_t* bytes, size_t size);

}  // namespace tevra::fuzz
