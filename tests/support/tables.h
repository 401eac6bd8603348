#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "cfdb/ca_descriptors.h"
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
  return makeDescriptor(kCaDescriptorTag, std::string{byte(systemId >> 8), byte(systemId & 0xFF),
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

/** Two decimal digits as one BCD byte. */
constexpr uint64_t bcdByte(int value) {
  return static_cast<uint64_t>(value / 10 * 16 + value % 10);
}

/** A DVB time value from its plain numbers. */
constexpr uint64_t dvbTime(uint64_t mjd, int hours, int minutes, int seconds) {
  return mjd << 24 | bcdByte(hours) << 16 | bcdByte(minutes) << 8 | bcdByte(seconds);
}

}  // namespace tevra::test
