#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "records/dvbpsi.h"

namespace tevra {

/** Bytes of a transport stream packet (ISO/IEC 13818-1, 2.4.3.2). */
inline constexpr size_t kTsPacketSize = 188;

/** The start of a packet: sync byte, PID, continuity counter; the rest is stuffing (ISO/IEC
 * 13818-1, 2.4.3.2). */
using PacketTemplate = std::array<uint8_t, kTsPacketSize>;

/** For the low 13 bits of `pid`, continuity counter 0. */
[[nodiscard]] PacketTemplate makePacketTemplate(int32_t pid);

/**
 * Replaces `packets` by the chain of sections, 188 bytes each. Every section starts in a packet of
 * its own, with pointer_field 0, and its last packet is filled with 0xFF. The continuity counter
 * runs on from the template's. Returns the number of packets, which is logged at level 7.
 */
int packetizeSections(std::vector<std::string>& packets, PacketTemplate packetTemplate,
                      const dvbpsi_psi_section_t* sections);

/** The level-7 line of packetizeSections, of packets that were made before. Returns their number.
 */
int logPacketCount(const std::vector<std::string>& packets);

}  // namespace tevra
