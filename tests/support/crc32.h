#pragma once

#include <cstdint>

namespace tevra::test {

/** CRC_32 (ISO/IEC 13818-1 annex A) bit by bit; 0 over a section that ends with its own. */
template <class Bytes>
[[nodiscard]] uint32_t crc32Of(const Bytes& bytes) {
  uint32_t crc = 0xFFFFFFFF;
  for (const auto byte : bytes) {
    crc ^= static_cast<uint32_t>(static_cast<uint8_t>(byte)) << 24;
    for (int bit = 0; bit < 8; ++bit) {
      crc = (crc & 0x80000000U) != 0 ? crc << 1 ^ 0x04C11DB7U : crc << 1;
    }
  }
  return crc;
}

}  // namespace tevra::test
