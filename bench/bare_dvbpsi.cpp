#include "bench/bare_dvbpsi.h"

#include <algorithm>
#include <array>

#include "bench/sample_tables.h"
#include "records/dvbpsi.h"

namespace tevra::bench {
namespace {

constexpr size_t kPacketSize = 188;
constexpr size_t kCrcSize = 4;

using Packet = std::array<char, kPacketSize>;

/** `pointer`: whether the section begins here. */
size_t header(Packet& packet, int pid, bool pointer, uint8_t counter) {
  packet.fill('\xFF');
  packet[0] = 0x47;
  packet[1] = static_cast<char>((pid >> 8 & 0x1F) | (pointer ? 0x40 : 0));
  packet[2] = static_cast<char>(pid & 0xFF);
  packet[3] = static_cast<char>(0x10 | counter);
  if (!pointer) {
    return 4;
  }
  packet[4] = 0;
  return 5;
}

void cut(std::vector<std::string>& packets, const dvbpsi_psi_section_t* sections, int pid) {
  uint8_t counter = 0;
  Packet packet;
  for (const auto* section = sections; section != nullptr; section = section->p_next) {
    const uint8_t* next = section->p_data;
    const uint8_t* end = section->p_payload_end + kCrcSize;
    for (bool first = true; next < end; first = false) {
      const size_t offset = header(packet, pid, first, counter++ & 0x0F);
      const size_t size = std::min<size_t>(static_cast<size_t>(end - next), kPacketSize - offset);
      std::copy_n(next, size, packet.begin() + offset);
      packets.emplace_back(packet.data(), packet.size());
      next += size;
    }
  }
}

uint8_t* bytes(const std::string& data) {
  return reinterpret_cast<uint8_t*>(const_cast<char*>(data.data()));
}

}  // namespace

void BareSynthesis::makePat() {
  dvbpsi_t* handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);
  dvbpsi_pat_t pat;
  dvbpsi_pat_init(&pat, 1, 1, true);
  dvbpsi_pat_program_add(&pat, kServiceId, kPmtPid);
  dvbpsi_psi_section_t* sections = dvbpsi_pat_sections_generate(handle, &pat, 100);
  cut(packets_, sections, 0);
  dvbpsi_DeletePSISections(sections);
  dvbpsi_pat_empty(&pat);
  dvbpsi_delete(handle);
}

void BareSynthesis::makeSdt() {
  dvbpsi_t* handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);
  dvbpsi_sdt_t sdt;
  dvbpsi_sdt_init(&sdt, 0x42, 1, 1, true, 1);
  for (const SDTService& source : sdt_.services) {
    dvbpsi_sdt_service_t* service = dvbpsi_sdt_service_add(
        &sdt, static_cast<uint16_t>(source.serviceId), false, false, 4, false);
    for (const Descriptor& descriptor : source.descriptors) {
      dvbpsi_sdt_service_descriptor_add(service, static_cast<uint8_t>(descriptor.tag),
                                        static_cast<uint8_t>(descriptor.data.size()),
                                        bytes(descriptor.data));
    }
  }
  dvbpsi_psi_section_t* sections = dvbpsi_sdt_sections_generate(handle, &sdt);
  cut(packets_, sections, 0x11);
  dvbpsi_DeletePSISections(sections);
  dvbpsi_sdt_empty(&sdt);
  dvbpsi_delete(handle);
}

void BareSynthesis::makePmt() {
  dvbpsi_t* handle = dvbpsi_new(nullptr, DVBPSI_MSG_NONE);
  dvbpsi_pmt_t pmt;
  dvbpsi_pmt_init(&pmt, static_cast<uint16_t>(pmt_.programNumber), 1, true,
                  static_cast<uint16_t>(pmt_.pcrPid));
  for (const PMTES& source : pmt_.esList) {
    dvbpsi_pmt_es_t* stream = dvbpsi_pmt_es_add(&pmt, static_cast<uint8_t>(source.streamType),
                                                static_cast<uint16_t>(source.pid));
    for (const Descriptor& descriptor : source.descriptors) {
      dvbpsi_pmt_es_descriptor_add(stream, static_cast<uint8_t>(descriptor.tag),
                                   static_cast<uint8_t>(descriptor.data.size()),
                                   bytes(descriptor.data));
    }
  }
  dvbpsi_psi_section_t* sections = dvbpsi_pmt_sections_generate(handle, &pmt);
  cut(packets_, sections, kPmtPid);
  dvbpsi_DeletePSISections(sections);
  dvbpsi_pmt_empty(&pmt);
  dvbpsi_delete(handle);
}

void BareSynthesis::run() {
  makePat();
  makeSdt();
  makePmt();
}

}  // namespace tevra::bench
