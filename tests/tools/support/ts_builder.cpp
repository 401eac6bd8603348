#include "tests/tools/support/ts_builder.h"

#include "tests/support/crc32.h"

#include <algorithm>

namespace tevra::tools::test {
namespace {

constexpr int kOriginalNetworkId = 0xFF01;
constexpr int64_t kStartTime = int64_t{60447} << 24;

Bytes withCrc(Bytes section) {
  const uint32_t crc = tevra::test::crc32Of(section);
  for (int shift = 24; shift >= 0; shift -= 8) {
    section.push_back(static_cast<uint8_t>(crc >> shift));
  }
  return section;
}

Bytes utcBytes(int64_t utcTime) {
  Bytes bytes;
  for (int shift = 32; shift >= 0; shift -= 8) {
    bytes.push_back(static_cast<uint8_t>(utcTime >> shift));
  }
  return bytes;
}

uint8_t low8(int value) {
  return static_cast<uint8_t>(value & 0xFF);
}

}  // namespace

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes all;
  for (const Bytes& part : parts) {
    all.insert(all.end(), part.begin(), part.end());
  }
  return all;
}

Bytes bytesOf(const std::string& text) {
  return Bytes(text.begin(), text.end());
}

Bytes be16(int value) {
  return {low8(value >> 8), low8(value)};
}

Bytes makeSection(const SectionHeader& header, const Bytes& payload) {
  const int length = static_cast<int>(payload.size()) + 9;
  return withCrc(joined({{low8(header.tableId)},
                         be16(0xB000 | length),
                         be16(header.extension),
                         {low8(0xC0 | (header.version << 1) | (header.isCurrent ? 1 : 0)),
                          low8(header.number), low8(header.lastNumber)},
                         payload}));
}

Bytes makeTot(int64_t utcTime, const Bytes& descriptors) {
  const Bytes payload = joined({utcBytes(utcTime), loop(0xF, descriptors)});
  return withCrc(joined({{0x73}, be16(0x7000 | (static_cast<int>(payload.size()) + 4)), payload}));
}

Bytes descriptor(int tag, const Bytes& payload) {
  return joined({{low8(tag), low8(static_cast<int>(payload.size()))}, payload});
}

Bytes loop(int high, const Bytes& content) {
  return joined({be16((high << 12) | static_cast<int>(content.size())), content});
}

Bytes makePat(int transportStreamId, int version, const Programs& programs, int number,
              int lastNumber) {
  Bytes payload;
  for (const auto& [programNumber, pid] : programs) {
    payload = joined({payload, be16(programNumber), be16(0xE000 | pid)});
  }
  return makeSection({0x00, transportStreamId, version, number, lastNumber}, payload);
}

Bytes makePmt(int programNumber, int version, int pcrPid, const std::vector<Stream>& streams) {
  Bytes payload = joined({be16(0xE000 | pcrPid), loop(0xF, {})});
  for (const Stream& stream : streams) {
    payload = joined(
        {payload, {low8(stream.type)}, be16(0xE000 | stream.pid), loop(0xF, stream.descriptors)});
  }
  return makeSection({0x02, programNumber, version}, payload);
}

Bytes makeSdt(int transportStreamId, int version, int serviceId, const std::string& name,
              int number, int lastNumber) {
  const Bytes text = bytesOf(name);
  const Bytes service =
      descriptor(0x48, joined({{0x01, 0x00, low8(static_cast<int>(text.size()))}, text}));
  return makeSection(
      {0x42, transportStreamId, version, number, lastNumber},
      joined({be16(kOriginalNetworkId), {0xFF}, be16(serviceId), {0xFD}, loop(0x8, service)}));
}

Bytes makeEit(const SectionHeader& header, int segmentLastSection,
              const std::vector<int>& eventIds) {
  Bytes payload =
      joined({be16(1), be16(kOriginalNetworkId), {low8(segmentLastSection), low8(header.tableId)}});
  for (const int eventId : eventIds) {
    payload =
        joined({payload, be16(eventId), utcBytes(kStartTime), {0x01, 0x00, 0x00}, loop(0x2, {})});
  }
  return makeSection(header, payload);
}

std::vector<TsPacket> PacketWriter::section(int pid, const Bytes& section) {
  return sections(pid, section);
}

std::vector<TsPacket> PacketWriter::sections(int pid, const Bytes& bytes) {
  std::vector<TsPacket> packets;
  for (size_t position = 0; position < bytes.size();) {
    TsPacket packet = next(pid);
    size_t offset = 4;
    if (packets.empty()) {
      packet.data()[1] |= 0x40;
      packet.data()[offset++] = 0;
    }
    const size_t size = std::min(kTsPacketSize - offset, bytes.size() - position);
    std::copy_n(bytes.begin() + static_cast<std::ptrdiff_t>(position), size,
                packet.data() + offset);
    position += size;
    packets.push_back(packet);
  }
  return packets;
}

TsPacket PacketWriter::stream(int pid, uint8_t fill, std::optional<int64_t> pcr) {
  TsPacket packet = next(pid);
  std::fill(packet.data() + 4, packet.data() + kTsPacketSize, fill);
  if (pcr) {
    const int64_t base = *pcr / 300;
    const int64_t extension = *pcr % 300;
    const Bytes field = {7,
                         0x10,
                         static_cast<uint8_t>(base >> 25),
                         static_cast<uint8_t>(base >> 17),
                         static_cast<uint8_t>(base >> 9),
                         static_cast<uint8_t>(base >> 1),
                         static_cast<uint8_t>(((base & 1) << 7) | 0x7E | (extension >> 8)),
                         static_cast<uint8_t>(extension)};
    std::copy(field.begin(), field.end(), packet.data() + 4);
    packet.data()[3] |= 0x20;
  }
  return packet;
}

TsPacket PacketWriter::next(int pid) {
  TsPacket packet;
  std::fill(packet.data(), packet.data() + kTsPacketSize, uint8_t{0xFF});
  packet.data()[0] = kTsSyncByte;
  packet.data()[1] = 0;
  packet.data()[3] = 0x10;
  packet.setPid(pid);
  packet.setContinuityCounter(counters_[pid]++);
  return packet;
}

void StreamBuilder::add(int pid, const Bytes& section) {
  const auto more = writer_.section(pid, section);
  packets_.insert(packets_.end(), more.begin(), more.end());
}

void StreamBuilder::add(int pid, std::optional<int64_t> pcr) {
  packets_.push_back(writer_.stream(pid, 0, pcr));
}

}  // namespace tevra::tools::test
