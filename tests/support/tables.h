#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "records/records.h"

/** Short ways to write the tables that the tests hand in and expect. */
namespace tevra::test {

inline PAT makePat(int32_t transportStreamId,
                   std::initializer_list<std::pair<int32_t, int32_t>> programs) {
  PAT pat;
  pat.transportStreamId = transportStreamId;
  for (const auto& [number, pid] : programs) {
    PATProgram& program = pat.programs.emplace_back();
    program.programNumber = number;
    program.pid = pid;
  }
  return pat;
}

inline Descriptor makeDescriptor(int32_t tag, std::string payload) {
  Descriptor descriptor;
  descriptor.tag = tag;
  descriptor.data = std::move(payload);
  return descriptor;
}

/** CA_descriptor (ISO/IEC 13818-1, 2.6.16) with its reserved bits set. */
inline Descriptor makeCaDescriptor(uint16_t systemId, uint16_t pid,
                                   const std::string& privateData = {}) {
  const auto byte = [](int value) { return static_cast<char>(value); };
  return makeDescriptor(0x09, std::string{byte(systemId >> 8), byte(systemId & 0xFF),
                                          byte(0xE0 | pid >> 8), byte(pid & 0xFF)} +
                                  privateData);
}

inline PMTES makeStream(int32_t type, int32_t pid, std::vector<Descriptor> descriptors = {}) {
  PMTES stream;
  stream.streamType = type;
  stream.pid = pid;
  stream.descriptors = std::move(descriptors);
  return stream;
}

inline PMT makePmt(int32_t programNumber, int32_t pcrPid, std::vector<PMTES> streams = {}) {
  PMT pmt;
  pmt.programNumber = programNumber;
  pmt.pcrPid = pcrPid;
  pmt.esList = std::move(streams);
  return pmt;
}

inline SDTService makeService(int32_t serviceId, std::vector<Descriptor> descriptors = {}) {
  SDTService service;
  service.serviceId = serviceId;
  service.descriptors = std::move(descriptors);
  return service;
}

/** Of the actual transport stream, and current. */
inline SDT makeSdt(std::vector<SDTService> services) {
  SDT sdt;
  sdt.tableId = 0x42;
  sdt.currentNext = true;
  sdt.services = std::move(services);
  return sdt;
}

inline CAT makeCat(std::vector<Descriptor> descriptors) {
  CAT cat;
  cat.descriptors = std::move(descriptors);
  return cat;
}

inline TOT makeTot(uint64_t utcTime) {
  TOT tot;
  tot.tableId = 0x73;
  tot.utcTime = static_cast<int64_t>(utcTime);
  return tot;
}

/** With one event per start time, numbered from 1, and recognisable values in every other member.
 */
inline EIT makeEit(int32_t serviceId, int32_t tableId, int32_t version,
                   const std::vector<uint64_t>& startTimes = {}) {
  EIT eit;
  eit.tableId = tableId;
  eit.serviceId = serviceId;
  eit.version = version;
  eit.currentNext = true;
  eit.transportStreamId = 7;
  eit.originalNetworkId = 0x20;
  eit.segmentLastSectionNumber = 3;
  eit.lastTableId = 0x51;
  for (const uint64_t startTime : startTimes) {
    EITEvent& event = eit.events.emplace_back();
    event.eventId = static_cast<int32_t>(eit.events.size());
    event.startTime = static_cast<int64_t>(startTime);
    event.duration = 0x013000;
    event.runningStatus = 4;
    event.freeCA = true;
    event.nvod = true;
    event.descriptors = {makeDescriptor(0x4D, "eng\x04News"), makeDescriptor(9, "not remapped")};
  }
  return eit;
}

/** `eits` under their own service and table ids. */
inline EITMap mapOf(const std::vector<EIT>& eits) {
  EITMap map;
  for (const EIT& eit : eits) {
    map[eit.serviceId][eit.tableId] = eit;
  }
  return map;
}

/** Two decimal digits as one BCD byte. */
constexpr uint64_t bcdByte(int value) {
  return static_cast<uint64_t>(value / 10 * 16 + value % 10);
}

/** A DVB time value from its plain numbers. */
constexpr uint64_t dvbTime(uint64_t mjd, int hours, int minutes, int seconds) {
  return mjd << 24 | bcdByte(hours) << 16 | bcdByte(minutes) << 8 | bcdByte(seconds);
}

}  // namespace tevra::test
