#include "synth/packetizer.h"

#include <algorithm>

#include "platform/module_utils.h"

namespace tevra {
namespace {

constexpr uint8_t kSyncByte = 0x47;
constexpr uint8_t kStuffingByte = 0xFF;
constexpr uint8_t kPayloadUnitStart = 0x40;
constexpr uint8_t kPayloadOnly = 0x10;
constexpr uint8_t kCounterMask = 0x0F;
constexpr size_t kHeaderSize = 4;
constexpr size_t kCrcSize = 4;

size_t sectionSize(const dvbpsi_psi_section_t& section) {
  const auto withoutCrc = static_cast<size_t>(section.p_payload_end - section.p_data);
  return withoutCrc + (section.b_syntax_indicator ? kCrcSize : 0);
}

void appendPacket(std::vector<std::string>& packets, PacketTemplate& packet) {
  packets.emplace_back(reinterpret_cast<const char*>(packet.data()), packet.size());
  packet[3] = (packet[3] + 1) & kCounterMask;
}

/** The first packet of a section has a pointer_field, and 1 byte less for it. */
size_t packetCount(const dvbpsi_psi_section_t* sections) {
  constexpr size_t kRoom = kTsPacketSize - kHeaderSize;
  size_t count = 0;
  for (const auto* section = sections; section != nullptr; section = section->p_next) {
    count += (1 + sectionSize(*section) + kRoom - 1) / kRoom;
  }
  return count;
}

void packetizeSection(std::vector<std::string>& packets, PacketTemplate& packet,
                      const dvbpsi_psi_section_t& section) {
  const uint8_t* next = section.p_data;
  size_t left = sectionSize(section);
  packet[1] |= kPayloadUnitStart;
  packet[4] = 0;  // pointer_field
  size_t offset = kHeaderSize + 1;
  while (left > 0) {
    packet[3] = (packet[3] & kCounterMask) | kPayloadOnly;
    const size_t carried = std::min(left, kTsPacketSize - offset);
    auto* end = std::copy_n(next, carried, packet.begin() + offset);
    std::fill(end, packet.end(), kStuffingByte);
    appendPacket(packets, packet);
    next += carried;
    left -= carried;
    packet[1] &= static_cast<uint8_t>(~kPayloadUnitStart);
    offset = kHeaderSize;
  }
}

}  // namespace

PacketTemplate makePacketTemplate(int32_t pid) {
  PacketTemplate packet;
  packet.fill(kStuffingByte);
  packet[0] = kSyncByte;
  packet[1] = static_cast<uint8_t>((pid >> 8) & 0x1F);
  packet[2] = static_cast<uint8_t>(pid & 0xFF);
  packet[3] = 0;
  return packet;
}

int packetizeSections(std::vector<std::string>& packets, PacketTemplate packetTemplate,
                      const dvbpsi_psi_section_t* sections) {
  packetTemplate[0] = kSyncByte;
  packets.clear();
  packets.reserve(packetCount(sections));
  for (const auto* section = sections; section != nullptr; section = section->p_next) {
    packetizeSection(packets, packetTemplate, *section);
  }
  return logPacketCount(packets);
}

int logPacketCount(const std::vector<std::string>& packets) {
  const int count = static_cast<int>(packets.size());
  log_function(kLogDebug, kNoTag, "Numero de paquetes necesarios para la sintesis [%d]", count);
  return count;
}

}  // namespace tevra
