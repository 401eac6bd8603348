#include "tests/system/soak_sections.h"

#include "tests/system/transport_stream.h"

namespace tevra::test {
namespace {

using thrift::dvb_tables::Descriptor;
using thrift::dvb_tables::PAT;
using thrift::dvb_tables::PATProgram;
using thrift::dvb_tables::PMT;
using thrift::dvb_tables::PMTES;
using thrift::dvb_tables::SDT;
using thrift::dvb_tables::SDTService;

constexpr size_t kPacketSize = 188;
constexpr size_t kPacketHeader = 4;

std::string u8(int32_t value) {
  return std::string(1, static_cast<char>(value & 0xFF));
}

std::string u16(int32_t value) {
  return u8(value >> 8) + u8(value);
}

/** 13 bits behind three reserved ones. */
std::string pidField(int32_t pid) {
  return u16(0xE000 | pid);
}

std::string bytesOf(const std::vector<Descriptor>& descriptors) {
  std::string bytes;
  for (const Descriptor& descriptor : descriptors) {
    bytes +=
        u8(descriptor.tag) + u8(static_cast<int32_t>(descriptor.data.size())) + descriptor.data;
  }
  return bytes;
}

/** A descriptor loop behind its 12-bit length and the four bits before that. */
std::string loop(int32_t fourBits, const std::vector<Descriptor>& descriptors) {
  const std::string bytes = bytesOf(descriptors);
  return u16(fourBits << 12 | static_cast<int32_t>(bytes.size())) + bytes;
}

struct Header {
  int32_t tableId;
  int32_t flags;  ///< section_syntax_indicator and the three bits behind it
  int32_t extension;
  int32_t version;
  bool currentNext;
};

/** The only section of a table. */
std::string section(const Header& header, const std::string& body) {
  constexpr size_t kBehindLength = 5;
  constexpr size_t kCrc = 4;
  const auto length = static_cast<int32_t>(kBehindLength + body.size() + kCrc);
  const int32_t version = 0xC0 | header.version << 1 | (header.currentNext ? 1 : 0);
  const std::string bytes = u8(header.tableId) + u16(header.flags << 12 | length) +
                            u16(header.extension) + u8(version) + u8(0) + u8(0) + body;
  const auto crc = static_cast<int64_t>(crc32Of(bytes));
  return bytes + u16(static_cast<int32_t>(crc >> 16)) + u16(static_cast<int32_t>(crc & 0xFFFF));
}

}  // namespace

std::string sectionOf(const PAT& pat) {
  std::string body;
  for (const PATProgram& program : pat.programs) {
    body += u16(program.programNumber) + pidField(program.pid);
  }
  return section({0x00, 0xB, pat.transportStreamId, pat.version, pat.currentNext}, body);
}

std::string sectionOf(const SDT& sdt) {
  std::string body = u16(sdt.originalNetworkId) + u8(0xFF);
  for (const SDTService& service : sdt.services) {
    const int32_t flags =
        0xFC | (service.eitSchedule ? 2 : 0) | (service.eitPresentFollowing ? 1 : 0);
    body += u16(service.serviceId) + u8(flags) +
            loop(service.runningStatus << 1 | (service.freeCA ? 1 : 0), service.descriptors);
  }
  return section({sdt.tableId, 0xF, sdt.transportStreamId, sdt.version, sdt.currentNext}, body);
}

std::string sectionOf(const PMT& pmt) {
  std::string body = pidField(pmt.pcrPid) + loop(0xF, pmt.descriptors);
  for (const PMTES& stream : pmt.esList) {
    body += u8(stream.streamType) + pidField(stream.pid) + loop(0xF, stream.descriptors);
  }
  return section({0x02, 0xB, pmt.programNumber, pmt.version, pmt.currentNext}, body);
}

std::vector<std::string> packetsOf(const std::string& section, int32_t pid) {
  constexpr size_t kRoom = kPacketSize - kPacketHeader;
  const std::string payload = u8(0) + section;  // the pointer field of the first packet
  std::vector<std::string> packets;
  for (size_t offset = 0; offset < payload.size(); offset += kRoom) {
    const int32_t start = offset == 0 ? 0x4000 : 0;
    const auto counter = static_cast<int32_t>(packets.size() & 0xF);
    std::string packet =
        u8(0x47) + u16(start | (pid & 0x1FFF)) + u8(0x10 | counter) + payload.substr(offset, kRoom);
    packet.resize(kPacketSize, '\xFF');
    packets.push_back(packet);
  }
  return packets;
}

}  // namespace tevra::test
