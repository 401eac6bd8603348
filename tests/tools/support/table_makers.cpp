#include "tests/tools/support/table_makers.h"

namespace tevra::tools::test {
namespace {

constexpr int kVersion = 3;
constexpr int kService = 101;

std::string counted(const std::string& text) {
  return static_cast<char>(text.size()) + text;
}

}  // namespace

Descriptor descriptorRecord(int tag, const std::string& data) {
  Descriptor record;
  record.tag = tag;
  record.data = data;
  return record;
}

Descriptor serviceDescriptor(int type, const std::string& name) {
  return descriptorRecord(0x48, static_cast<char>(type) + counted("Maker") + counted(name));
}

Descriptor languageDescriptor(const std::string& code) {
  return descriptorRecord(0x0A, code + '\0');
}

Descriptor caDescriptor(int caSystemId, int pid) {
  return descriptorRecord(0x09,
                          {static_cast<char>(caSystemId >> 8), static_cast<char>(caSystemId & 0xFF),
                           static_cast<char>(0xE0 | (pid >> 8)), static_cast<char>(pid & 0xFF)});
}

Descriptor shortEventDescriptor(const std::string& name) {
  return descriptorRecord(0x4D, "eng" + counted(name) + counted(""));
}

PMTES streamRecord(int type, int pid, const std::vector<Descriptor>& descriptors) {
  PMTES record;
  record.streamType = type;
  record.pid = pid;
  record.descriptors = descriptors;
  return record;
}

SDTService serviceRecord(int id, const std::string& name) {
  SDTService record;
  record.serviceId = id;
  record.runningStatus = 4;
  record.descriptors = {serviceDescriptor(0x01, name)};
  return record;
}

EITEvent eventRecord(int id, int64_t startTime, const std::string& name) {
  EITEvent record;
  record.eventId = id;
  record.startTime = startTime;
  record.duration = 0x003000;
  record.descriptors = {shortEventDescriptor(name)};
  return record;
}

PAT patRecord(const std::vector<std::pair<int, int>>& programs) {
  PAT record;
  record.transportStreamId = 1;
  record.version = kVersion;
  record.currentNext = true;
  for (const auto& [number, pid] : programs) {
    PATProgram& program = record.programs.emplace_back();
    program.programNumber = number;
    program.pid = pid;
  }
  return record;
}

PMT pmtRecord(const std::vector<PMTES>& streams) {
  PMT record;
  record.programNumber = kService;
  record.version = kVersion;
  record.currentNext = true;
  record.pcrPid = 502;
  record.esList = streams;
  return record;
}

SDT sdtRecord(const std::vector<SDTService>& services) {
  SDT record;
  record.tableId = 0x42;
  record.transportStreamId = 1;
  record.originalNetworkId = 2;
  record.version = kVersion;
  record.currentNext = true;
  record.services = services;
  return record;
}

EIT eitRecord(const std::vector<EITEvent>& events) {
  EIT record;
  record.tableId = 0x50;
  record.lastTableId = 0x50;
  record.serviceId = kService;
  record.version = kVersion;
  record.currentNext = true;
  record.events = events;
  return record;
}

CAT catRecord(const std::vector<Descriptor>& descriptors) {
  CAT record;
  record.version = kVersion;
  record.currentNext = true;
  record.descriptors = descriptors;
  return record;
}

TOT totRecord(int64_t utcTime) {
  TOT record;
  record.tableId = 0x73;
  record.utcTime = utcTime;
  return record;
}

int64_t timeAt(int64_t clock) {
  constexpr int64_t kDay = 0xC079;  // the example of EN 300 468 annex C
  return (kDay << 24) | clock;
}

}  // namespace tevra::tools::test
