#include "tests/synth/transport_packets.h"

#include <algorithm>
#include <stdexcept>

#include "records/dvbpsi.h"
#include "records/dvbpsi_converters.h"

namespace tevra::test {
namespace {

constexpr size_t kPacketSize = 188;
constexpr size_t kSectionHeader = 3;

void require(bool condition, const std::string& reason) {
  if (!condition) {
    throw std::runtime_error(reason);
  }
}

bool isUnitStart(const std::string& packet) {
  return (byteAt(packet, 1) & 0x40) != 0;
}

void checkHeader(const std::string& packet, int pid, size_t index) {
  const std::string where = "packet " + std::to_string(index) + ": ";
  require(packet.size() == kPacketSize, where + "not 188 bytes");
  require(byteAt(packet, 0) == 0x47, where + "no sync byte");
  require((byteAt(packet, 1) & 0xA0) == 0, where + "in error or of priority");
  require(((byteAt(packet, 1) & 0x1F) << 8 | byteAt(packet, 2)) == pid, where + "other PID");
  require(byteAt(packet, 3) >> 4 == 1, where + "scrambled or with an adaptation field");
  require((byteAt(packet, 3) & 0x0F) == static_cast<int>(index % 16), where + "counter");
}

size_t sizeInHeader(const std::string& section) {
  require(section.size() >= kSectionHeader, "section without header");
  return kSectionHeader +
         static_cast<size_t>((byteAt(section, 1) & 0x0F) << 8 | byteAt(section, 2));
}

/** Cuts the stuffing after the section, which must begin in its last packet. */
void finish(std::string& section) {
  const size_t size = sizeInHeader(section);
  require(section.size() >= size, "section cut short");
  require(section.size() - size < kPacketSize - 4, "packets of stuffing alone");
  const auto stuffing = section.begin() + static_cast<std::ptrdiff_t>(size);
  require(std::all_of(stuffing, section.end(), [](char byte) { return byte == '\xFF'; }),
          "something other than stuffing after a section");
  section.resize(size);
  require(crc32Of(section) == 0, "wrong CRC_32");
}

template <class Table>
void collect(void* tables, Table* table) {
  static_cast<std::vector<DvbpsiPtr<Table>>*>(tables)->emplace_back(table);
}

void collectSdt(dvbpsi_t* handle, uint8_t tableId, uint16_t extension, void* tables) {
  (void)dvbpsi_sdt_attach(handle, tableId, extension, collect<dvbpsi_sdt_t>, tables);
}

template <class Table>
DvbpsiPtr<Table> decode(const Packets& packets, bool (*attach)(dvbpsi_t*, void*, int32_t),
                        void (*detach)(dvbpsi_t*), int32_t argument = 0) {
  std::vector<DvbpsiPtr<Table>> tables;
  const DvbpsiHandle handle(dvbpsi_new(nullptr, DVBPSI_MSG_NONE));
  require(handle != nullptr && attach(handle.get(), &tables, argument), "no decoder");
  bool taken = true;
  for (const std::string& packet : packets) {
    std::vector<uint8_t> bytes(packet.begin(), packet.end());
    taken = dvbpsi_packet_push(handle.get(), bytes.data()) && taken;
  }
  detach(handle.get());
  require(taken, "a packet was refused");
  require(tables.size() == 1, std::to_string(tables.size()) + " tables decoded");
  return std::move(tables.front());
}

}  // namespace

int byteAt(const std::string& bytes, size_t index) {
  return static_cast<uint8_t>(bytes.at(index));
}

int versionOf(const std::string& section) {
  return byteAt(section, 5) >> 1 & 0x1F;
}

bool currentNextOf(const std::string& section) {
  return (byteAt(section, 5) & 1) != 0;
}

std::vector<std::string> sectionsOf(const Packets& packets, int pid) {
  std::vector<std::string> sections;
  for (size_t i = 0; i < packets.size(); ++i) {
    const std::string& packet = packets[i];
    checkHeader(packet, pid, i);
    if (isUnitStart(packet)) {
      require(byteAt(packet, 4) == 0, "pointer_field not 0");
      sections.push_back(packet.substr(5));
    } else {
      require(!sections.empty(), "first packet starts no section");
      sections.back() += packet.substr(4);
    }
  }
  std::for_each(sections.begin(), sections.end(), finish);
  return sections;
}

PAT decodePat(const Packets& packets) {
  const auto attach = [](dvbpsi_t* handle, void* tables, int32_t) {
    return dvbpsi_pat_attach(handle, collect<dvbpsi_pat_t>, tables);
  };
  return thrift::dvb_tables::d2tPAT(decode<dvbpsi_pat_t>(packets, attach, dvbpsi_pat_detach).get());
}

SDT decodeSdt(const Packets& packets) {
  const auto attach = [](dvbpsi_t* handle, void* tables, int32_t) {
    return dvbpsi_AttachDemux(handle, collectSdt, tables);
  };
  return thrift::dvb_tables::d2tSDT(
      decode<dvbpsi_sdt_t>(packets, attach, dvbpsi_DetachDemux).get());
}

PMT decodePmt(const Packets& packets, int32_t programNumber) {
  const auto attach = [](dvbpsi_t* handle, void* tables, int32_t program) {
    return dvbpsi_pmt_attach(handle, static_cast<uint16_t>(program), collect<dvbpsi_pmt_t>, tables);
  };
  return thrift::dvb_tables::d2tPMT(
      decode<dvbpsi_pmt_t>(packets, attach, dvbpsi_pmt_detach, programNumber).get());
}

}  // namespace tevra::test
