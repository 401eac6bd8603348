#include "tests/system/psi_tables.h"

#include <stdexcept>

namespace tevra::test {
namespace {

constexpr size_t kCrcSize = 4;
constexpr int kServiceTag = 0x48;

int u8(const std::string& bytes, size_t offset) {
  return static_cast<uint8_t>(bytes.at(offset));
}

int u16(const std::string& bytes, size_t offset) {
  return u8(bytes, offset) << 8 | u8(bytes, offset + 1);
}

int u13(const std::string& bytes, size_t offset) {
  return u16(bytes, offset) & 0x1FFF;
}

size_t length12(const std::string& bytes, size_t offset) {
  return static_cast<size_t>(u16(bytes, offset) & 0x0FFF);
}

int versionOf(const std::string& section) {
  return u8(section, 5) >> 1 & 0x1F;
}

std::map<int, std::string> descriptorsIn(const std::string& bytes, size_t offset, size_t length) {
  std::map<int, std::string> descriptors;
  const size_t end = offset + length;
  while (offset + 2 <= end) {
    const auto size = static_cast<size_t>(u8(bytes, offset + 1));
    descriptors[u8(bytes, offset)] = bytes.substr(offset + 2, size);
    offset += 2 + size;
  }
  return descriptors;
}

ParsedService serviceIn(const std::string& descriptor) {
  const auto providerLength = static_cast<size_t>(u8(descriptor, 1));
  const auto nameLength = static_cast<size_t>(u8(descriptor, 2 + providerLength));
  ParsedService service;
  service.type = u8(descriptor, 0);
  service.provider = descriptor.substr(2, providerLength);
  service.name = descriptor.substr(3 + providerLength, nameLength);
  return service;
}

}  // namespace

ParsedPat parsePat(const std::string& section) {
  ParsedPat pat;
  pat.transportStreamId = u16(section, 3);
  pat.version = versionOf(section);
  for (size_t offset = 8; offset + 4 <= section.size() - kCrcSize; offset += 4) {
    if (u16(section, offset) != 0) {
      pat.programs[u16(section, offset)] = u13(section, offset + 2);
    }
  }
  return pat;
}

ParsedPmt parsePmt(const std::string& section) {
  ParsedPmt pmt;
  pmt.programNumber = u16(section, 3);
  pmt.version = versionOf(section);
  pmt.pcrPid = u13(section, 8);
  size_t offset = 12 + length12(section, 10);
  while (offset + 5 <= section.size() - kCrcSize) {
    const size_t length = length12(section, offset + 3);
    pmt.streams.push_back({u8(section, offset), u13(section, offset + 1),
                           descriptorsIn(section, offset + 5, length)});
    offset += 5 + length;
  }
  return pmt;
}

ParsedSdt parseSdt(const std::string& section) {
  ParsedSdt sdt;
  sdt.transportStreamId = u16(section, 3);
  sdt.version = versionOf(section);
  sdt.originalNetworkId = u16(section, 8);
  size_t offset = 11;
  while (offset + 5 <= section.size() - kCrcSize) {
    const size_t length = length12(section, offset + 3);
    const auto descriptors = descriptorsIn(section, offset + 5, length);
    const auto service = descriptors.find(kServiceTag);
    sdt.services[u16(section, offset)] =
        service == descriptors.end() ? ParsedService() : serviceIn(service->second);
    offset += 5 + length;
  }
  return sdt;
}

std::map<int, int64_t> parseEitEvents(const std::string& section) {
  std::map<int, int64_t> events;
  size_t offset = 14;
  while (offset + 12 <= section.size() - kCrcSize) {
    int64_t start = 0;
    for (size_t byte = 2; byte < 7; ++byte) {
      start = start << 8 | u8(section, offset + byte);
    }
    events[u16(section, offset)] = start;
    offset += 12 + length12(section, offset + 10);
  }
  return events;
}

std::string firstSection(const TransportStream& stream, int pid, int tableId) {
  for (const CarriedSection& section : stream.sections(pid)) {
    if (u8(section.bytes, 0) == tableId) {
      return section.bytes;
    }
  }
  throw std::runtime_error("no table " + std::to_string(tableId) + " on PID " +
                           std::to_string(pid));
}

}  // namespace tevra::test
